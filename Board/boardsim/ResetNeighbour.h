/// @file
/// The reset service.
#pragma once

#include "Endpoints.h"
#include "Neighbour.h"

#include <string>
#include <utility>

namespace boardsim {

/// Accepts subscriptions to reset events, and tells how the board was last reset.
class ResetNeighbour : public Neighbour {
 public:
  /// @param answerFile holds the answer to the question for the last reset (ResetAnswer.h); read with each question
  explicit ResetNeighbour(std::string answerFile)
      : Neighbour(HWAPI_RESET_SERVICE), m_answerFile(std::move(answerFile)) {}

 private:
  void AddRoutesTo(ps::hwapi::common::Service& service) override;
  void HandleSubscribeReq(void* msg);
  void HandleGetRpRamReq(void* msg);

  const std::string m_answerFile;
};

}  // namespace boardsim
