/// @file
/// Makes a definition a part of the library's interface.
#pragma once

#define GARDDAL_API extern "C" __attribute__((visibility("default")))
