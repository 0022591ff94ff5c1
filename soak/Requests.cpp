#include "Requests.h"

#include "Endpoints.h"
#include "PrivateRoot.h"
#include "Process.h"
#include "Scene.h"
#include "messages/BlackBox.h"
#include "messages/MessageIds.h"
#include "messages/TempMeas.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace soak {
namespace {

constexpr char kSourceFile[] = "/ffs/run/soak-source";
constexpr std::size_t kLargeBytes = 43000;
constexpr double kUsPerSecond = 1e6;

std::vector<u8> FrequencyRequest(u32 transaction, std::size_t fans, EFanUnit id = EFanUnit_GarFan1) {
  std::vector<u8> bytes(sizeof(SApiSetFanPwmFreqReq) + (fans - 1) * sizeof(SFanPwmFreqParam));
  const std::array<u32, 2> head = {transaction, static_cast<u32>(fans)};
  const SFanPwmFreqParam fan{.fanId = id, .pwmFreq = EFanParam_PwmFreq25k};
  std::memcpy(bytes.data(), head.data(), sizeof head);
  for (std::size_t i = 0; i < fans; ++i) std::memcpy(bytes.data() + sizeof head + i * sizeof fan, &fan, sizeof fan);
  return bytes;
}

}  // namespace

Task::Task() : m_task(AaSysComUserRegister(0, AaProEuCurrent())) {
  if (m_task == 0) bench::Die("no free task");
}

Task::Task(Task&& other) noexcept : m_task(std::exchange(other.m_task, 0)) {}

Task::~Task() {
  if (m_task != 0) AaSysComUserDeregister(m_task);
}

TAaSysComSicad Task::Address() const { return AaSysComSicadGet(m_task, AaSysComGetOwnNid()); }

void SendBytes(u32 service, u32 id, const void* payload, std::size_t size, TAaSysComSicad sender) {
  void* msg = AaSysComMsgCreate(id, static_cast<u32>(size), AaSysComSicadGet(service, AaSysComGetOwnNid()));
  if (msg == nullptr) bench::Die("message");
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(msg), payload, size);
  AaSysComMsgSendS(&msg, sender);
}

Message Receive(double seconds) {
  return Message(AaSysComMsgReceive(static_cast<u32>(seconds * kClockSpeed * kUsPerSecond), nullptr));
}

void SendStop(TAaSysComSicad sender) {
  const SApiTempMeasReq stop{.command = ETempMeasCommand_Stop,
                             .sensorType = ETempSensorType_KelOcxo,
                             .interval = 0,
                             .resolution = ETempMeasResolution_Normal,
                             .clientAddr = 0};
  SendTo(HWAPI_TEMPERATURE_SERVICE, API_TEMP_MEAS_REQ_MSG, stop, sender);
}

void SendStart() {
  const SApiTempMeasReq start{.command = ETempMeasCommand_Start,
                              .sensorType = ETempSensorType_Kel,
                              .interval = 1000 * kClockSpeed,
                              .resolution = ETempMeasResolution_Normal,
                              .clientAddr = 0};
  SendTo(HWAPI_TEMPERATURE_SERVICE, API_TEMP_MEAS_REQ_MSG, start);
}

void SendFrequency(u32 transaction, EFanUnit fan) {
  const std::vector<u8> request = FrequencyRequest(transaction, 1, fan);
  SendBytes(HWAPI_FAN_SERVICE, API_SET_FAN_PWM_FREQ_REQ_MSG, request.data(), request.size());
}

void SendLargeFrequency(u32 transaction) {
  const std::vector<u8> request = FrequencyRequest(transaction, kLargeBytes / sizeof(SFanPwmFreqParam));
  SendBytes(HWAPI_FAN_SERVICE, API_SET_FAN_PWM_FREQ_REQ_MSG, request.data(), request.size());
}

void SendSpeed() {
  const SApi2SetFanSpeedReq request{.transactionId = 1,
                                    .receiver = {.board = 0, .cpu = 0, .task = 0},  // the sender gets them
                                    .timePeriod = kClockSpeed,
                                    .numOfItems = 1,
                                    .unit = {{.fanId = EFanUnit_GarFan1, .speed = 50}}};
  SendTo(HWAPI_FAN_SERVICE, API2_SET_FAN_SPEED_REQ_MSG, request);
}

void SendStoreFile(u32 transaction) {
  SApiBlackboxStoreFileReq request{};
  request.transactionId = transaction;
  std::copy(std::begin(kSourceFile), std::end(kSourceFile), request.sourceFile);
  SendTo(HWAPI_BLACKBOX, API_BLACKBOX_STORE_FILE_REQ_MSG, request);
}

void SendStoreData(u32 transaction) {
  SendTo(HWAPI_BLACKBOX, API_STORE_BLACKBOX_DATA_REQ_MSG, SApiStoreBlackboxDataReq{.transactionId = transaction});
}

void SendUnknown(u32 id) { SendBytes(HWAPI_TEMPERATURE_SERVICE, id, nullptr, 0); }

void WriteSourceFile() {
  ps::hwapi::common::climate::MakeRealDir("/ffs/run/config/lifedata");
  ps::hwapi::common::climate::WriteRealFile(kSourceFile, "stored again and again\n");
}

}  // namespace soak
