#include "Functions.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace fake::internal {
namespace {

struct Function {
  std::string_view name;
  Failing failing;
};

constexpr Function kFunctions[] = {
    {.name = "AaConfigRadGetValue", .failing = Failing::Zero},
    {.name = "AaConfigTagGet", .failing = Failing::Errno},
    {.name = "AaConfigTagGetU32", .failing = Failing::Errno},
    {.name = "AaConfigTagPublicSet", .failing = Failing::Errno},
    {.name = "AaConfigTagRegister", .failing = Failing::Errno},
    {.name = "AaErrorAssertion", .failing = Failing::Never},
    {.name = "AaFileClose", .failing = Failing::Errno},
    {.name = "AaFileCopy", .failing = Failing::Errno},
    {.name = "AaFileCreateDir", .failing = Failing::Errno},
    {.name = "AaFileDirExists", .failing = Failing::Zero},
    {.name = "AaFileExists", .failing = Failing::Zero},
    {.name = "AaFileFreeListDirArray", .failing = Failing::Never},
    {.name = "AaFileListDir", .failing = Failing::Errno},
    {.name = "AaFileOpen", .failing = Failing::Zero},
    {.name = "AaFileReadLine", .failing = Failing::Zero},
    {.name = "AaFileRemove", .failing = Failing::Errno},
    {.name = "AaFileWrite", .failing = Failing::Zero},
    {.name = "AaLocalTimeGet", .failing = Failing::Errno},
    {.name = "AaMemUnRefDbg", .failing = Failing::Never},
    {.name = "AaProAllAlive", .failing = Failing::Zero},
    {.name = "AaProEuCurrent", .failing = Failing::Zero},
    {.name = "AaProRestBegin", .failing = Failing::Never},
    {.name = "AaProRestEnd", .failing = Failing::Never},
    {.name = "AaSemCreateC", .failing = Failing::Zero},
    {.name = "AaSemDestroy", .failing = Failing::Errno},
    {.name = "AaSemPost", .failing = Failing::Errno},
    {.name = "AaSemWait", .failing = Failing::Errno},
    {.name = "AaSysComCounterGet", .failing = Failing::Zero},
    {.name = "AaSysComEnd16Swap", .failing = Failing::Never},
    {.name = "AaSysComEnd32Swap", .failing = Failing::Never},
    {.name = "AaSysComEuCreateAndStart", .failing = Failing::Errno},
    {.name = "AaSysComGetOwnNid", .failing = Failing::Never},
    {.name = "AaSysComIsHostAndMsgEndianSame", .failing = Failing::Never},
    {.name = "AaSysComMsgCreate", .failing = Failing::Zero},
    {.name = "AaSysComMsgCreateReply", .failing = Failing::Zero},
    {.name = "AaSysComMsgDestroy", .failing = Failing::Never},
    {.name = "AaSysComMsgGetId", .failing = Failing::Never},
    {.name = "AaSysComMsgGetPayload", .failing = Failing::Zero},
    {.name = "AaSysComMsgGetPayloadSize", .failing = Failing::Zero},
    {.name = "AaSysComMsgGetReceiver", .failing = Failing::Never},
    {.name = "AaSysComMsgGetSender", .failing = Failing::Zero},
    {.name = "AaSysComMsgReceive", .failing = Failing::Zero},
    {.name = "AaSysComMsgSend", .failing = Failing::Never},
    {.name = "AaSysComMsgSendS", .failing = Failing::Never},
    {.name = "AaSysComMsgSetEndianSame", .failing = Failing::Never},
    {.name = "AaSysComMsgSetSender", .failing = Failing::Never},
    {.name = "AaSysComNmapGetBoard", .failing = Failing::Never},
    {.name = "AaSysComNmapGetCpu", .failing = Failing::Never},
    {.name = "AaSysComNmapGetSicad", .failing = Failing::Never},
    {.name = "AaSysComSicadGet", .failing = Failing::Never},
    {.name = "AaSysComUserDeregister", .failing = Failing::Errno},
    {.name = "AaSysComUserRegister", .failing = Failing::Zero},
    {.name = "AaSysLogPrintE", .failing = Failing::Never},
    {.name = "AaSysLogSetThreshold", .failing = Failing::Never},
    {.name = "AaSysTimeSleep", .failing = Failing::Errno},
    {.name = "AaSysTimerDelete", .failing = Failing::Errno},
    {.name = "AaSysTimermCreate", .failing = Failing::Errno},
    {.name = "AaTrblCollect", .failing = Failing::Trbl},
    {.name = "AaTrblFileRegister", .failing = Failing::Trbl},
    {.name = "AaTrblFileUnregister", .failing = Failing::Trbl},
    {.name = "AaUtcTimeGet", .failing = Failing::Errno},
    {.name = "AaUtcTimeSet", .failing = Failing::Errno},
    {.name = "ApiGetLocalUnitType", .failing = Failing::Zero},
    {.name = "ApiGetLocalUnitVersion", .failing = Failing::Zero},
    {.name = "ApiGetModuleProductionCode", .failing = Failing::Zero},
    {.name = "ApiGetModuleSerialNumber", .failing = Failing::Zero},
    {.name = "ArgumentParser::AddOption", .failing = Failing::Never},
    {.name = "Service::AddMsgDelegate", .failing = Failing::Never},
    {.name = "Service::Exit", .failing = Failing::Never},
    {.name = "Service::HandleConfigTagChange", .failing = Failing::Never},
    {.name = "Service::Init", .failing = Failing::Throws},
    {.name = "Service::PreStartup", .failing = Failing::Zero},
    {.name = "Service::Run", .failing = Failing::Never},
    {.name = "Service::SetServiceStateRad", .failing = Failing::Never},
    {.name = "Service::SetUseCommonServiceState", .failing = Failing::Never},
    {.name = "Service::SetVerbose", .failing = Failing::Never},
    {.name = "Service::WaitForConfigTag", .failing = Failing::Throws},
    {.name = "ddal_boot_get_linux_active", .failing = Failing::Driver},
    {.name = "ddal_boot_get_linux_id", .failing = Failing::Driver},
    {.name = "ddal_boot_get_reset_loop_count", .failing = Failing::Driver},
    {.name = "ddal_bp_3hu_backplane_type_get", .failing = Failing::Driver},
    {.name = "ddal_devicetree_get_ecc_double", .failing = Failing::Driver},
    {.name = "ddal_devicetree_get_ecc_single", .failing = Failing::Driver},
    {.name = "ddal_devicetree_get_isti", .failing = Failing::Driver},
    {.name = "ddal_fan_get_fan_pwm_freq", .failing = Failing::Driver},
    {.name = "ddal_fan_get_pwm", .failing = Failing::Driver},
    {.name = "ddal_fan_get_rpm", .failing = Failing::Driver},
    {.name = "ddal_fan_set_fan_pwm_freq", .failing = Failing::Driver},
    {.name = "ddal_fan_set_pwm", .failing = Failing::Driver},
    {.name = "ddal_ffs_is_mounted", .failing = Failing::Driver},
    {.name = "ddal_filter_get_product_data", .failing = Failing::Driver},
    {.name = "ddal_init", .failing = Failing::Driver},
    {.name = "ddal_psu_get_product_data", .failing = Failing::Driver},
    {.name = "ddal_rf_asic_read_reg", .failing = Failing::Driver},
    {.name = "ddal_rf_chain_status_get", .failing = Failing::Driver},
    {.name = "ddal_strerror", .failing = Failing::Never},
    {.name = "ddal_temp_get_curr", .failing = Failing::Driver},
    {.name = "hwapiMsgQueueReceiveSelective", .failing = Failing::Zero},
};

}  // namespace

Failing HowItFails(std::string_view function) {
  const auto* found = std::ranges::find(kFunctions, function, &Function::name);
  if (found == std::end(kFunctions))
    throw std::invalid_argument("the platform has no function " + std::string(function));
  return found->failing;
}

}  // namespace fake::internal
