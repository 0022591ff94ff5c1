/// @file
/// How the black box hands its files to the troubleshooting service.
#pragma once

#include "AaTrbl.h"
#include "BlackBoxData.h"

#include <string>

namespace ps::hwapi::common::climate {

/// @return EAaTrblRet_Ok, else what the service says
inline i32 RegisterTechlogFile(const std::string& name, const std::string& path) {
  return AaTrblFileRegister(name.c_str(), path.c_str(), EAaTrblFilePriority_Low, 0, techlogPrepareFileCb,
                            techlogStoreFileCb, techlogDeleteFileCb, nullptr);
}

}  // namespace ps::hwapi::common::climate
