// SPDX-License-Identifier: Apache-2.0
// The adapter of the amplifier middleware: log, call, turn the status into a bool.
#include "keptvamplifier.h"

#include <algorithm>
#include <cstdint>

#include "kepmiddleware.h"
#include "mwlamplifier.h"
#include "payloadkeys.h"

using mwl_amp::MWLAmplifier;

namespace
{

constexpr const char* kErrorId = "AMPLIFIER_MWL_ERROR";
constexpr const char* kChipTypeKey = key::kAmpChipType.name;
constexpr kepKey kQualityKeys[] = {key::kEqualizerStatus, key::kAudioBalance,
                                   key::kTvSetupConfiguration};

bool hasKeys(const JValue& payload, kepList<kepKey> keys)
{
    return std::all_of(keys.begin(), keys.end(),
                       [&](const kepKey& each) { return payload.hasKey(each.name); });
}

/// What both register operations are given.
struct RegisterRequest {
    explicit RegisterRequest(const JValue& payload)
        : slaveAddress(payload[key::kSlaveAddress.name].asString()),
          portNumber(lowByte(payload[key::kPortNumber.name])),
          address(payload[key::kAddress.name].asString()),
          numberOfByte(lowByte(payload[key::kNumberOfByte.name])),
          sizeOfArray(lowByte(payload[key::kSizeOfArray.name]))
    {
    }

    static bool isComplete(const JValue& payload)
    {
        return hasKeys(payload, listOf(key::kReadRegisterKeys));
    }

    static std::uint8_t lowByte(const JValue& number)
    {
        return static_cast<std::uint8_t>(number.asNumber<std::int32_t>());
    }

    std::string slaveAddress;
    std::uint8_t portNumber;
    std::string address;
    std::uint8_t numberOfByte;
    std::uint8_t sizeOfArray;
};

std::vector<std::string> textsIn(const JValue& array)
{
    std::vector<std::string> texts;
    for (const JValue& element : array.elements())
        if (element.isString())
            texts.push_back(element.asString());
    return texts;
}

} // namespace

kepList<kepKey> kepTVAmplifier::qualityKeys()
{
    return listOf(kQualityKeys);
}

kepTVAmplifier* kepTVAmplifier::getInstance()
{
    static kepTVAmplifier instance;
    return &instance;
}

bool kepTVAmplifier::initAmplifier()
{
    if (mPtrAmplifierInstance == nullptr)
        mPtrAmplifierInstance = MWLAmplifier::getInstance();
    KEP_INFO("mPtrAmplifierInstance is Initialised");
    return true;
}

bool kepTVAmplifier::initAmplifierAttributes()
{
    KEP_INFO("Parsing amplifier values from xml");
    const bool registered =
        KEP_SUCCEEDED(registerParams<&MWLAmplifier::registerQualityParams>(
                          mPtrAmplifierInstance, &kepTvParser::mQualityParamsMap),
                      kErrorId, "Failed to register quality parameters");
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmplifierInit(), kErrorId,
                         "Failed to initilize amplifier Middle ware") && // sic
           registered;
}

void kepTVAmplifier::parseAmplifierXML()
{
    KEP_INFO("Calling registerQualityParams & parseAmpParams for snapshot-boot");
    if (registerParams<&MWLAmplifier::registerQualityParams>(mPtrAmplifierInstance,
                                                             &kepTvParser::mQualityParamsMap) != 0)
        KEP_ERROR(kErrorId, "Failed to register quality parameters in parseAmplifierXML");
    if (mPtrAmplifierInstance->parseAmpParams() != 0)
        KEP_ERROR(kErrorId, "Failed to call parseAmpParams");
}

void kepTVAmplifier::resetAmplifierAttributes()
{
    KEP_INFO("Calling setAmpReset of amplifier middleware library");
    if (KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpReset(), kErrorId, "Failed to call setAmpReset"))
        mIsAmpResetDone = true;
}

bool kepTVAmplifier::updateAmplifierType(JValue payload)
{
    if (!payload.hasKey(kChipTypeKey)) {
        KEP_ERROR("INVALID_PARAMETER", "%s is not available", kChipTypeKey);
        return false;
    }
    kepTvParser* parser = kepTvParser::getInstance();
    parser->set(parser->mQualityParamsMap, kChipTypeKey, payload[kChipTypeKey].asString());

    if (!mIsBootup) {
        if (!initAmplifierAttributes()) {
            KEP_ERROR(kErrorId, "Failed to init amplifier attributes");
            return false;
        }
        return true;
    }
    KEP_INFO("Amplifier chip type is received during bootup to play powerOnSound");
    mIsBootup = false;
    if (!KEP_SUCCEEDED(registerParams<&MWLAmplifier::registerQualityParams>(
                           mPtrAmplifierInstance, &kepTvParser::mQualityParamsMap),
                       kErrorId, "Failed to register quality parameters"))
        return false;
    if (!mIsAmpResetDone) {
        KEP_ERROR(kErrorId, "Amp reset is not completed, so skip Amplifier Init");
        return true;
    }
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmplifierInit(), kErrorId,
                         "Failed to initilize amplifier Middle ware"); // sic
}

void kepTVAmplifier::setAmplifierSettings(JValue payload)
{
    if (!payload.isObject()) {
        KEP_ERROR("INVALID_PARAMETER", "Invalid object");
        return;
    }
    if (payload.hasKey(key::kEqualizerStatus.name)) {
        const std::string status = payload[key::kEqualizerStatus.name].asString();
        if (setEqualizerStatus(status))
            KEP_DEBUG("set equalizerStatus for amplifier middleware successfully as %s",
                      status.c_str());
    }
    if (payload.hasKey(key::kAudioBalance.name)) {
        const auto balance = payload[key::kAudioBalance.name].asNumber<std::int32_t>();
        if (KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpBalance(balance), kErrorId,
                          "Failed to set balance in amplifier middle ware library as %d", balance))
            KEP_INFO("set Balance successfully as %d", balance);
    }
    if (payload.hasKey(key::kTvSetupConfiguration.name)) {
        if (KEP_SUCCEEDED(mPtrAmplifierInstance->changeAmpEQ(), kErrorId,
                          "Failed to change amplifier equalizer"))
            KEP_INFO("change amplifier equalizer");
    }
}

bool kepTVAmplifier::setEqualizerStatus(const std::string& status)
{
    KEP_INFO("Setting Amplifier EQ equalizerStatus %s", status.c_str());
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpEQ(status == "on"), kErrorId,
                         "Failed to set amplifier equalizer as %s", status.c_str());
}

void kepTVAmplifier::setAmplifierMute(const bool& mute)
{
    KEP_DEBUG("Called setAmplifierMute function");
    if (KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpMute(mute), kErrorId,
                      "Failed to set amplifier mute status %d", mute))
        KEP_INFO("set amplifier mute status %d", mute);
}

bool kepTVAmplifier::setAmplifierResume()
{
    KEP_DEBUG("Called setAmplifierResume function");
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpResume(), kErrorId,
                         "Amp Resume call is failed");
}

bool kepTVAmplifier::setAmplifierSuspend()
{
    KEP_INFO("Called setAmplifierSuspend function");
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpSuspend(), kErrorId,
                         "failed to call setAmpSuspend function");
}

bool kepTVAmplifier::setAmplifierState(JValue payload)
{
    KEP_DEBUG("Called setAmplifier function");
    if (!hasKeys(payload, listOf(key::kAmplifierStateKeys)))
        return false;
    const std::string type = payload[key::kAmpType.name].asString();
    const std::string status = payload[key::kAmpStatus.name].asString();
    return KEP_SUCCEEDED(mPtrAmplifierInstance->setAmpOnOff(type, status), kErrorId,
                         "Failed to set amplifier state for amplifier Type: %s, Status: %s ",
                         type.c_str(), status.c_str());
}

bool kepTVAmplifier::getAmplifierState(std::string& type, std::vector<std::string>& states)
{
    KEP_DEBUG("Called getAmplifier function");
    return KEP_SUCCEEDED(mPtrAmplifierInstance->getAmpState(&type, &states), kErrorId,
                         "Failed to get amplifier States");
}

bool kepTVAmplifier::writeI2cDataToAmplifier(JValue payload)
{
    if (!hasKeys(payload, listOf(key::kWriteRegisterKeys))) {
        KEP_ERROR("ERROR_LOG", "writeI2cDataToAmplifier: amplifierObject value not received");
        return false;
    }
    KEP_INFO("Called writeI2cDataToAmplifier function with amplifierObject %s",
             payload.stringify().c_str());
    const RegisterRequest request{payload};
    return KEP_SUCCEEDED(
        mPtrAmplifierInstance->writeI2cDataToAmp(
            request.slaveAddress, request.portNumber, request.address, request.numberOfByte,
            request.sizeOfArray, textsIn(payload[key::kData.name])),
        kErrorId, "Failed to write I2c Data to Amplifier IC  slaveAddress: %s, address: %s ", // sic
        request.slaveAddress.c_str(), request.address.c_str());
}

JValue kepTVAmplifier::readI2cDataFromAmplifier(JValue payload)
{
    JValue answer = JValue::array();
    if (!RegisterRequest::isComplete(payload)) {
        KEP_ERROR(kErrorId, "Missing info to read I2c data from audio amplifier");
        return answer;
    }
    KEP_INFO(
        "Called readI2cDataFromAmplifier function to read data from audio amplifier with amplifierObject %s",
        payload.stringify().c_str());
    const RegisterRequest request{payload};
    for (const std::string& text : mPtrAmplifierInstance->readI2cDataFromAmp(
             request.slaveAddress, request.portNumber, request.address, request.numberOfByte,
             request.sizeOfArray))
        answer.append(text);
    return answer;
}
