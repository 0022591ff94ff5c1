#include "Service.h"

#include <cstdio>

using ps::hwapi::common::Service;

/// The daemon "CLM". The exit status is 0 also after a failed initialisation.
int main(int argc, char** argv) {
  try {
    Service::Get().Startup(argc, argv);
  } catch (const Service::InitFailedException& e) {
    std::fprintf(stderr, "%s: %s (file: %s, line: %d )", e.what(), e.getDescription().c_str(), e.getFile().c_str(),
                 static_cast<int>(e.getLine()));
  }
  return 0;
}
