/// @file
/// Contract functions are what the library exports; include behind the contract header that declares them.
#pragma once

#define QIS_EXPORT __attribute__((visibility("default")))
