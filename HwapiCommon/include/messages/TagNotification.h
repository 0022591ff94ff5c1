/// @file
/// Tells a task that a public tag was set.
#pragma once

#include "AaSysCom.h"

/// AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG. The service sends it to itself, all zero, to hand work to its own thread; only
/// the id counts then.
struct SAaConfigTagPublicSetNotifMsg {
  u8 bytes[92];
};
static_assert(sizeof(SAaConfigTagPublicSetNotifMsg) == 92);
