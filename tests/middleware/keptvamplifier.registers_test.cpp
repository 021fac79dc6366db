// SPDX-License-Identifier: Apache-2.0
// The amplifier adapter: reading and writing registers.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "amplifiertest.h"
#include "television.h"

// --- Registers

TEST_F(KepTvAmplifier, ReadingRegistersCallsAndLogsAsItsTableSays)
{
    for (const JValue& request : {registerRequest(), registerRequestWithout("data")})
        expectTrace(
            request.stringify(), [&request] { amplifier().readI2cDataFromAmplifier(request); },
            {"amplifier.readI2cDataFromAmp(" + RegisterArguments{}.text(Register::Read) + ")"},
            {readCalled(request)});
}

TEST_F(KepTvAmplifier, ReadingRegistersAnswersTheMiddlewaresTextsInTheirOrder)
{
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()).stringify(), "[]");
    virtualtv::setI2cData({"0xFF", "0x01", "", "a\"b"});
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()).stringify(),
              R"(["0xFF","0x01","","a\"b"])");
    const LongData data{1000};
    std::vector<std::string> texts;
    for (const JValue& text : data.passed.elements())
        texts.push_back(text.asString());
    virtualtv::setI2cData(texts);
    EXPECT_EQ(amplifier().readI2cDataFromAmplifier(registerRequest()), data.passed);
}

TEST_F(KepTvAmplifier, AWriteThatLacksAKeyIsRefused)
{
    const LogLine refused =
        kLog.refusal("ERROR_LOG", "writeI2cDataToAmplifier",
                     "writeI2cDataToAmplifier: amplifierObject value not received");
    const auto expectRefusal = [&](const JValue& request) {
        expectTrace(request.stringify(),
                    [&request] { EXPECT_FALSE(amplifier().writeI2cDataToAmplifier(request)); }, {},
                    {refused});
    };
    for (const char* key : kWriteKeys)
        expectRefusal(registerRequestWithout(key));
    for (const JValue& request : unusableRequests())
        expectRefusal(request);
}

TEST_F(KepTvAmplifier, AReadThatLacksAKeyAnswersAnEmptyArray)
{
    virtualtv::setI2cData({"0xFF"});
    const LogLine refused = kLog.error("readI2cDataFromAmplifier",
                                       "Missing info to read I2c data from audio amplifier");
    const auto expectRefusal = [&](const JValue& request) {
        expectTrace(request.stringify(),
                    [&request] {
                        EXPECT_EQ(amplifier().readI2cDataFromAmplifier(request), JValue::array());
                    },
                    {}, {refused});
    };
    for (const char* key : kWriteKeys)
        if (std::string{"data"} != key)
            expectRefusal(registerRequestWithout(key));
    for (const JValue& request : unusableRequests())
        expectRefusal(request);
}

TEST_F(KepTvAmplifier, NumbersOfARequestKeepTheirLowEightBits)
{
    for (const RequestKey& key : kByteKeys)
        expectWritesAndReads(key, kBytes);
}

TEST_F(KepTvAmplifier, TextsOfARequestArePassedOnAsTheyAre)
{
    for (const RequestKey& key : kTextKeys)
        expectWritesAndReads(key, kTexts);
}

TEST_F(KepTvAmplifier, OfTheDataOnlyTextsAreWritten)
{
    for (const ConversionRow& row : kData) {
        RegisterArguments arguments;
        arguments.data = row.passed;
        expectAllOutcomes(writeRegisters(registerRequest("data", json(row.json)), arguments));
    }
}

TEST_F(KepTvAmplifier, DataOfEveryLengthIsWrittenInItsOrder)
{
    for (const int size : {0, 1, 5, 1000}) {
        const LongData data{size};
        RegisterArguments arguments;
        arguments.data = data.passed.stringify();
        expectAllOutcomes(writeRegisters(registerRequest("data", data.given), arguments));
    }
}
