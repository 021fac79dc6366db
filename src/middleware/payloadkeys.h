// SPDX-License-Identifier: Apache-2.0
// The keys of payloads: who reads one names it from here, and the catalogue shows the same. What
// only the sound engine or the delay reads is in tables of their sources.
#pragma once

#include "catalogue.h"

namespace key
{

// --- Texts and numbers that values stand for

inline constexpr const char* kOn[] = {"on"};
inline constexpr const char* kOnOff[] = {"on", "off"};
inline constexpr const char* kTrue[] = {"true"};
inline constexpr const char* kJapan[] = {"JP"};
inline constexpr const char* kDigitalModes[] = {"pcm", "auto", "passThrough"};
// Names that a choice of digital mode accepts: it is the current output that gets it. Not all of
// them can be selected.
inline constexpr const char* kDigitalModeOutputs[] = {
    "external_arc", "external_optical", "SPDIF", "tv_external_speaker", "tv_speaker_optical_arc",
};
inline constexpr const char* kPowerStates[] = {"on", "off", "opticLightOn", "opticLightOff"};
inline constexpr const char* kArcProfiles[] = {"EAC3", "ATMOS"};
inline constexpr const char* kEarcCapabilities[] = {"TrueHD", "DTSHD", "MAT2PCM", "DD+",
                                                    "DD",     "DTS",   "AAC",     "PCM"};
inline constexpr const char* kPurposes[] = {"AUDIO_DESC", "EFFECT"};
inline constexpr const char* kRecording[] = {"RECORDING"};
inline constexpr const char* kGame[] = {"kepgame"};
inline constexpr const char* kGainTypes[] = {"input", "output"};

struct ArcActivation {
    const char* name;
    int arc;
    int earc;
};
inline constexpr ArcActivation kArcActivations[] = {{"ARC", 1, 0}, {"eARC", 0, 1}, {"None", 0, 0}};

inline constexpr kepRequestType kAudioReport{
    "setAudioInputInfo", "what an audio pipeline carries; delay, gain and sound engine are told"};
inline constexpr kepRequestType kVideoReport{"setVideoInputInfo",
                                             "what a video pipeline carries; the delay is told"};
inline constexpr kepRequestType kConnectionReport{
    "", "both, when the policy connects; succeeds always"};
inline constexpr kepRequestType kRequestTypes[] = {kAudioReport, kVideoReport, kConnectionReport};

// With numbers from the driver's list; nothing derives them.
inline constexpr kepNamedNumber kCategoryCodes[] = {{100, "ATSC"}, {4, "ARIB"}, {12, "DVB"}};
inline constexpr kepNamedNumber kCopyrights[] = {
    {1, "free"}, {2, "no_more"}, {4, "once"}, {8, "never"}};

inline constexpr auto kNameOf = [](const auto& row) { return row.name; };
inline constexpr auto kBroadcastSystems = projected(kCategoryCodes, kNameOf);
inline constexpr auto kCopyrightTexts = projected(kCopyrights, kNameOf);
inline constexpr auto kArcActivationTexts = projected(kArcActivations, kNameOf);
inline constexpr auto kRequestTypeTexts = projected(kRequestTypes, kNameOf);

// clang-format off

// --- Settings
//                                                name                       read as            needed  values                       only    meaning
inline constexpr kepKey kCountry                {"tv.hw.countryType",        KEP_VALUE_STRING,  false,  listOf(kJapan),              false,  "country; Japan has digital formats of its own"};
inline constexpr kepKey kDigitalModeOutput      {"soundOutput",              KEP_VALUE_STRING,  true,   listOf(kDigitalModeOutputs), true,   "output whose digital mode was chosen"};
inline constexpr kepKey kMode                   {"mode",                     KEP_VALUE_ANY,     true,   {},                          false,  "applies the stored \"soundOutputDigital\" anew"};
inline constexpr kepKey kForceDdPlus            {"forceOutputDDPLUS",        KEP_VALUE_STRING,  true,   listOf(kTrue),               false,  "whether Dolby Digital Plus is forced"};
inline constexpr kepKey kMix                    {"mix",                      KEP_VALUE_BOOL,    true,   {},                          false,  "whether other sounds are mixed into digital outputs"};
inline constexpr kepKey kCopyright              {"copyright",                KEP_VALUE_STRING,  true,   listOf(kCopyrightTexts),     true,   "how often digital outputs may be copied"};
inline constexpr kepKey kIsOttEnable            {"isOTTEnable",              KEP_VALUE_BOOL,    true,   {},                          false,  "decoder mode of streaming services"};
inline constexpr kepKey kIsAtmosLocking         {"isATMOSLockingEnable",     KEP_VALUE_BOOL,    true,   {},                          false,  "whether Atmos is locked"};
inline constexpr kepKey kPowerState             {"powerState",               KEP_VALUE_STRING,  true,   listOf(kPowerStates),        true,   "power of the sound bar, or the optical light"};
inline constexpr kepKey kArcActivation          {"arcActivation",            KEP_VALUE_STRING,  false,  listOf(kArcActivationTexts), false,  "which of ARC and eARC is switched on"};
inline constexpr kepKey kArcProfile             {"arcProfile",               KEP_VALUE_STRING,  false,  listOf(kArcProfiles),        false,  "what the ARC receiver decodes best"};
inline constexpr kepKey kEarcCapability         {"earcCapability",           KEP_VALUE_ARRAY,   false,  listOf(kEarcCapabilities),   false,  "what the eARC receiver decodes"};
inline constexpr kepKey kEarcAtmos              {"earcATMOS",                KEP_VALUE_BOOL,    false,  {},                          false,  "whether Atmos is encoded for eARC"};
inline constexpr kepKey kStatus                 {"status",                   KEP_VALUE_STRING,  true,   listOf(kOnOff),              true,   "switch"};
inline constexpr kepKey kSoundSettingValues     {"soundSettingValues",       KEP_VALUE_ARRAY,   true,   {},                          false,  "numbers for the sound engine"};
inline constexpr kepKey kAtmosState             {"atmosState",               KEP_VALUE_STRING,  true,   listOf(kOn),               false,  "Dolby Atmos; any other text switches it off"};
inline constexpr kepKey kForcedDolbyAtmos       {"forcedDolbyAtmos",         KEP_VALUE_BOOL,    true,   {},                          false,  "whether Dolby Atmos is forced"};
inline constexpr kepKey kAmpChipType            {"tv.model.ampChipType",     KEP_VALUE_STRING,  true,   {},                          false,  "chip of the amplifier"};
inline constexpr kepKey kAmpType                {"ampType",                  KEP_VALUE_STRING,  true,   {},                          false,  "which amplifier"};
inline constexpr kepKey kAmpStatus              {"status",                   KEP_VALUE_STRING,  true,   {},                          false,  "passed on"};
inline constexpr kepKey kSlaveAddress           {"slaveAddress",             KEP_VALUE_STRING,  true,   {},                          false,  "I2C address of the chip, passed on"};
inline constexpr kepKey kPortNumber             {"portNumber",               KEP_VALUE_NUMBER,  true,   {},                          false,  "I2C port, 0 to 255"};
inline constexpr kepKey kAddress                {"address",                  KEP_VALUE_STRING,  true,   {},                          false,  "register, passed on"};
inline constexpr kepKey kNumberOfByte           {"numberOfByte",             KEP_VALUE_NUMBER,  true,   {},                          false,  "bytes of the register's address, 0 to 255"};
inline constexpr kepKey kSizeOfArray            {"sizeOfArray",              KEP_VALUE_NUMBER,  true,   {},                          false,  "bytes of data, 0 to 255"};
inline constexpr kepKey kData                   {"data",                     KEP_VALUE_ARRAY,   true,   {},                          false,  "texts to write, passed on"};
inline constexpr kepKey kCorrectionValue        {"correctionValue",          KEP_VALUE_NUMBER,  true,   {},                          false,  "the factory's delay"};
inline constexpr kepKey kOffsetValue            {"offsetValue",              KEP_VALUE_NUMBER,  true,   {},                          false,  "delay to add"};
inline constexpr kepKey kOperationType          {"operationType",            KEP_VALUE_STRING,  true,   {},                          false,  "what the offset is for, passed on"};
inline constexpr kepKey kStoreMode              {"storeMode",                KEP_VALUE_STRING,  false,  {},                          false,  "store or home, passed on to the sound engine"};
inline constexpr kepKey kMemcDelayLevel         {"memcDelayLevel",           KEP_VALUE_STRING,  true,   {},                          false,  "delay of the picture's motion compensation"};
inline constexpr kepKey kSupportBnoModel        {"supportBnoModel",          KEP_VALUE_BOOL,    true,   {},                          false,  "lifts Japan's own formats from ARC"};
inline constexpr kepKey kActivateWisa           {"activateWisa",             KEP_VALUE_BOOL,    true,   {},                          false,  "kept, and read by nothing yet"};
inline constexpr kepKey kMutedOutput            {"soundOutput",              KEP_VALUE_STRING,  true,   {},                          false,  "a sound output's name"};
inline constexpr kepKey kMute                   {"mute",                     KEP_VALUE_BOOL,    true,   {},                          false,  "mute"};

// --- Sound quality
inline constexpr kepKey kSoundOutputDigital     {"soundOutputDigital",       KEP_VALUE_STRING,  false,  listOf(kDigitalModes),       false,  "digital mode; applied at once when it is the only key"};
inline constexpr kepKey kBroadcastSystem        {"tv.zib.tvBroadcastSystem", KEP_VALUE_STRING,  false,  listOf(kBroadcastSystems),   false,  "broadcast system; its category code is written at the start-up"};
inline constexpr kepKey kEqualizerStatus        {"equalizerStatus",          KEP_VALUE_STRING,  false,  listOf(kOn),               false,  "equalizer; any other text switches it off"};
inline constexpr kepKey kSoundEngineStatus      {"soundEngineStatus",        KEP_VALUE_STRING,  false,  listOf(kOn),               false,  "sound engine; any other text switches it off"};
inline constexpr kepKey kAudioBalance           {"audioBalance",             KEP_VALUE_NUMBER,  false,  {},                          false,  "balance"};
inline constexpr kepKey kTvSetupConfiguration   {"tvSetupConfiguration",     KEP_VALUE_ANY,     false,  {},                          false,  "changes the amplifier's equalizer"};
inline constexpr kepKey kAudioDescription       {"audioDescription",         KEP_VALUE_STRING,  false,  listOf(kOn),               false,  "applies the stored \"audioDescriptionVolume\""};
inline constexpr kepKey kAudioDescriptionVolume {"audioDescriptionVolume",   KEP_VALUE_NUMBER,  false,  {},                          false,  "volume of the audio description"};
inline constexpr kepKey kAutoVolume             {"autoVolume",               KEP_VALUE_ANY,     false,  {},                          false,  "writes the input gain anew"};

// --- Queries
inline constexpr kepKey kGainType               {"gainType",                 KEP_VALUE_STRING,  false,  listOf(kGainTypes),          false,  "which gain; any other text is a type of its own"};
inline constexpr kepKey kGainOutput             {"soundOutput",              KEP_VALUE_STRING,  false,  {},                          false,  "passed on, and answered"};

// --- Pipelines
inline constexpr kepKey kAttributePurpose       {"pipelinePurpose",          KEP_VALUE_ARRAY,   false,  listOf(kPurposes),           false,  "with one of these it does not become the main audio"};
inline constexpr kepKey kStreamType             {"streamType",               KEP_VALUE_STRING,  false,  listOf(kGame),               false,  "a game does not become the main audio"};
inline constexpr kepKey kPipelineInfo           {"pipelineInfo",             KEP_VALUE_OBJECT,  true,   {},                          false,  "the pipeline"};
inline constexpr kepKey kCategoryInfo           {"categoryInfo",             KEP_VALUE_OBJECT,  false,  {},                          false,  "what it carries; needed unless \"requestType\" is empty"};
inline constexpr kepKey kRequestType            {"requestType",              KEP_VALUE_STRING,  true,   listOf(kRequestTypeTexts),   true,   "what is reported; not read on a reset"};
inline constexpr kepKey kActiveState            {"activeState",              KEP_VALUE_BOOL,    false,  {},                          false,  "whether pipelines become the middleware's current parameters, from now on"};
inline constexpr kepKey kPipelineId             {"pipelineId",               KEP_VALUE_STRING,  true,   {},                          false,  "which pipeline"};
inline constexpr kepKey kReset                  {"reset",                    KEP_VALUE_BOOL,    false,  {},                          false,  "true strips what is known of it down to its id"};
inline constexpr kepKey kPipelinePurpose        {"pipelinePurpose",          KEP_VALUE_ARRAY,   false,  listOf(kRecording),          false,  "a recording's parameters go to the encoder"};
inline constexpr kepKey kResource               {"resource",                 KEP_VALUE_STRING,  false,  {},                          false,  "its input; an audio report has to name the same"};
inline constexpr kepKey kSourceType             {"sourceType",               KEP_VALUE_STRING,  false,  {},                          false,  "its source; on ARC the eARC format is written anew"};
inline constexpr kepKey kPipelineStreamType     {"streamType",               KEP_VALUE_STRING,  false,  {},                          false,  "kept for the middleware"};
inline constexpr kepKey kSourceAttribute        {"sourceAttribute",          KEP_VALUE_STRING,  false,  {},                          false,  "kept for the middleware"};
inline constexpr kepKey kPipelineType           {"pipelinetype",             KEP_VALUE_STRING,  false,  {},                          false,  "kept for the middleware"};
inline constexpr kepKey kImmersive              {"immersive",                KEP_VALUE_STRING,  false,  {},                          false,  "immersive format, for the sound engine"};
inline constexpr kepKey kCodec                  {"codec",                    KEP_VALUE_STRING,  false,  {},                          false,  "codec; on ARC the eARC format is written anew"};
inline constexpr kepKey kParams                 {"params",                   KEP_VALUE_ARRAY,   false,  {},                          false,  "texts kept as params0, params1, ..."};
// clang-format on

// --- What is read together

inline constexpr kepKey kAmplifierStateKeys[] = {kAmpType, kAmpStatus};
inline constexpr kepKey kReadRegisterKeys[] = {kSlaveAddress, kPortNumber, kAddress, kNumberOfByte,
                                               kSizeOfArray};
inline constexpr kepKey kWriteRegisterKeys[] = {kSlaveAddress, kPortNumber,  kAddress,
                                                kNumberOfByte, kSizeOfArray, kData};
inline constexpr kepKey kOffsetDelayKeys[] = {kOffsetValue, kOperationType};
inline constexpr kepKey kGainValueKeys[] = {kGainType, kGainOutput};

inline constexpr kepQuery kGainValue{"gainValue", listOf(kGainValueKeys),
                                     R"({"soundOutput": string, "gainValue": string})"};
inline constexpr kepQuery kReadRegister{"readI2cDataFromAmplifier", listOf(kReadRegisterKeys),
                                        "[string, ...], empty when a key is missing"};
inline constexpr kepQuery kAmplifierState{
    "getAmplifierState", {}, R"({"amplifierType": string, "amplifierStates": [string, ...]})"};

} // namespace key
