#include "BlackBoxData.h"

namespace ps::hwapi::common::climate {

BlackBoxData* BlackBoxData::getInstance() {
  static BlackBoxData* const instance = new BlackBoxData;
  return instance;
}

}  // namespace ps::hwapi::common::climate
