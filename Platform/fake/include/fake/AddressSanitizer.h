/// @file
/// FAKE_ADDRESS_SANITIZER is defined where the address sanitizer watches: it ends a test before the recording platform
/// could report a violation. Each compiler says it in its own way.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define FAKE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FAKE_ADDRESS_SANITIZER 1
#endif
#endif
