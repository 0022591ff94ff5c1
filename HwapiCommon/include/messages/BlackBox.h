/// @file
/// Black-box requests: store the data, store a file.
#pragma once

#include "AaSysCom.h"
#include "messages/Status.h"

#include <cstddef>

/// API_STORE_BLACKBOX_DATA_REQ_MSG.
struct SApiStoreBlackboxDataReq {
  u32 transactionId;
};
static_assert(sizeof(SApiStoreBlackboxDataReq) == 4);

/// API_STORE_BLACKBOX_DATA_RESP_MSG; goes to the software-download service, whoever asked.
struct SApiStoreBlackboxDataResp {
  u32 transactionId;
  EStatus status;
};
static_assert(sizeof(SApiStoreBlackboxDataResp) == 8);
static_assert(offsetof(SApiStoreBlackboxDataResp, status) == 4);

/// API_BLACKBOX_STORE_FILE_REQ_MSG.
struct SApiBlackboxStoreFileReq {
  u32 transactionId;
  u32 numOfPreviousFiles;  ///< older copies of the same file that may stay
  char sourceFile[128];    ///< path; may lack its terminating zero
  char targetFile[128];    ///< path; may lack its terminating zero
};
static_assert(sizeof(SApiBlackboxStoreFileReq) == 264);
static_assert(offsetof(SApiBlackboxStoreFileReq, numOfPreviousFiles) == 4);
static_assert(offsetof(SApiBlackboxStoreFileReq, sourceFile) == 8);
static_assert(offsetof(SApiBlackboxStoreFileReq, targetFile) == 136);

/// API_BLACKBOX_STORE_FILE_RESP_MSG.
struct SApiBlackboxStoreFileResp {
  u32 transactionId;
  EStatus status;
};
static_assert(sizeof(SApiBlackboxStoreFileResp) == 8);
static_assert(offsetof(SApiBlackboxStoreFileResp, status) == 4);
