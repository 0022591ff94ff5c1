/// @file
/// Messages, addresses, messaging users and execution units (threads) of the platform.
///
/// A message is a buffer with an id, a sender, a receiver and a payload of 0 to 65535 bytes. It is named by an opaque
/// handle. Whoever holds a handle owns the message until it is sent or destroyed.
///
/// An execution unit (EU) is a thread. A messaging user is a task number registered for one EU; messages to that task
/// are received by that EU. Every function may be called from every thread unless it says otherwise; one message must
/// not be used by two threads at once.
#pragma once

#include "GloTypes.h"

/// Address of a task: board (bits 31..24), cpu (bits 23..16), task (bits 15..0). 0 is no address.
using TAaSysComSicad = u32;
/// Address of a node: board (bits 15..8), cpu (bits 7..0).
using TAaSysComNid = u32;
/// Number of an execution unit within its process. 0 is none.
using TAaProEuId = u32;

/// Time-out of AaSysComMsgReceive that never ends.
inline constexpr u32 AASYSCOM_NO_TIMEOUT = 0xFFFFFFFFu;
/// Largest payload of a message in bytes.
inline constexpr u32 AASYSCOM_MAX_PAYLOAD = 65535;

/// What AaSysComCounterGet counts, per process and since its start.
enum EAaSysComCounter : u32 {
  EAaSysComCounter_QueueFull = 0,   ///< messages sent here and dropped because the receiver's queue was full
  EAaSysComCounter_NoReceiver = 1,  ///< messages sent here to a task that nobody serves
  EAaSysComCounter_Refused = 2,     ///< messages arrived here from a peer that may not send
  EAaSysComCounter_Malformed = 3,   ///< messages arrived here that were no platform messages
  EAaSysComCounter_Unexpected = 4   ///< messages arrived here for a task that is not registered any more
};

extern "C" {

/// Creates a message.
/// @param msgId    message id
/// @param size     payload size in bytes, 0 to AASYSCOM_MAX_PAYLOAD
/// @param receiver address of the receiving task
/// @return the message, owned by the caller, its payload zeroed, its sender 0; null when the size is out of range or
///         memory is short
void* AaSysComMsgCreate(u32 msgId, u32 size, TAaSysComSicad receiver);

/// Creates a message addressed to the sender of @p request, and with the receiver of @p request as sender.
/// @return as AaSysComMsgCreate; null also when @p request is null. @p request stays the caller's.
void* AaSysComMsgCreateReply(u32 msgId, u32 size, void* request);

/// @return the payload, valid as long as the message; null when @p msg is null or its payload size is 0
void* AaSysComMsgGetPayload(void* msg);
/// @return payload size in bytes; 0 when @p msg is null
u32 AaSysComMsgGetPayloadSize(void* msg);
/// @return message id; 0 when @p msg is null
u32 AaSysComMsgGetId(void* msg);
/// @return address of the sender; 0 when @p msg is null or it has none
TAaSysComSicad AaSysComMsgGetSender(void* msg);
/// @return address of the receiver; 0 when @p msg is null
TAaSysComSicad AaSysComMsgGetReceiver(void* msg);
/// Sets the sender that the receiver will see. Does nothing when @p msg is null.
void AaSysComMsgSetSender(void* msg, TAaSysComSicad sender);

/// Sends the message; it belongs to the platform from here on, whatever *msg holds afterwards: the host makes it null,
/// another platform may leave it. A message without a sender gets the address of the first task registered for the
/// calling EU. Never blocks; a message that cannot be delivered is dropped with an Error line and counted
/// (EAaSysComCounter). Null is ignored.
void AaSysComMsgSend(void** msg);
/// AaSysComMsgSetSender, then AaSysComMsgSend.
void AaSysComMsgSendS(void** msg, TAaSysComSicad sender);
/// Frees a message that is not sent; *msg becomes null. Null is ignored.
void AaSysComMsgDestroy(void** msg);

/// Takes the next message for any task of the calling EU. Used by the hardware-API runtime and by client programs, not
/// by services.
/// @param timeoutUs longest wait in microseconds of board time; 0 only looks, AASYSCOM_NO_TIMEOUT waits for ever
/// @param filter    null takes the first message; otherwise a count and that many ids: the first message with one of
///                  the ids is taken and the others stay queued, in order
/// @return the message, owned by the caller; null on time-out, when a signal came, or when the EU has no task
void* AaSysComMsgReceive(u32 timeoutUs, const u16* filter);

/// @return whether the payload of @p msg was written in this host's byte order; true when @p msg is null
TBoolean AaSysComIsHostAndMsgEndianSame(void* msg);
/// Marks the payload of a message that is to be sent as written in this host's byte order (the default) or in the
/// other one. For programs that stand in for a peer of the other byte order; services do not call it.
void AaSysComMsgSetEndianSame(void* msg, TBoolean same);
/// @return @p value with its two bytes swapped
u16 AaSysComEnd16Swap(u16 value);
/// @return @p value with its four bytes reversed
u32 AaSysComEnd32Swap(u32 value);

/// @return node of this process
TAaSysComNid AaSysComGetOwnNid(void);
/// @return address of @p task (lowest 16 bits are used; 0 gives the node's own address) on the node @p nid
TAaSysComSicad AaSysComSicadGet(u32 task, TAaSysComNid nid);
/// @return board part of an address
u8 AaSysComNmapGetBoard(TAaSysComSicad sicad);
/// @return cpu part of an address
u8 AaSysComNmapGetCpu(TAaSysComSicad sicad);
/// @return address made of its three parts
TAaSysComSicad AaSysComNmapGetSicad(u8 board, u8 cpu, u16 task);

/// Registers a task of the own node for an EU: from here on messages to it are queued.
/// @param task 1 to 0xFFFF, or 0 for any free one
/// @param eu   an EU of this process
/// @return the task; 0 when it is taken on this node (by a living process), out of range, or the EU is unknown
u32 AaSysComUserRegister(u32 task, TAaProEuId eu);
/// Gives a task back; messages that are queued for it are dropped.
/// @return 0 on success and for an unknown task, which is harmless
i32 AaSysComUserDeregister(u32 task);

/// Starts a thread. It ends when @p entry returns; nobody joins it.
/// @param eu           out: number of the new EU
/// @param name         thread name, cut to 15 characters
/// @param entry        function to run
/// @param stackSize    bytes; rounded up to what the host needs
/// @param priority     priority on the board; the host gives all threads the same
/// @param argument     start argument; copied, the thread gets the address of the copy, valid until @p entry returns
/// @param argumentSize bytes of @p argument to copy; 0: the thread gets @p argument itself
/// @return 0 on success, else an errno value; nothing runs then
i32 AaSysComEuCreateAndStart(TAaProEuId* eu, const char* name, void* (*entry)(void*), u32 stackSize, u32 priority,
                             const void* argument, u32 argumentSize);
/// @return EU of the calling thread; a thread that the platform did not start gets its number with the first call
TAaProEuId AaProEuCurrent(void);

/// @return the counter's value; 0 for an unknown counter
u32 AaSysComCounterGet(EAaSysComCounter counter);

}  // extern "C"
