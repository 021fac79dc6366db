// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests of digital outputs.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "keptvparser.h"
#include "tvbackendtest.h"

inline constexpr const char* kFile = "keptvaudio:";
inline constexpr const char* kCountry = "tv.hw.countryType";
inline constexpr const char* kBroadcastSystem = "tv.zib.tvBroadcastSystem";

inline LogLine said(const std::string& function, const std::string& text)
{
    return info(kFile + function, text);
}

inline LogLine whispered(const std::string& function, const std::string& text)
{
    return debug(kFile + function, text);
}

inline LogLine notSet(const std::string& function, const std::string& text)
{
    return error("CONTROL_ELEMENT_SET_ERROR", kFile + function, text);
}

/// What only other rooms of the backend write.
class DigitalTest : public TvBackendTest
{
protected:
    static kepTvParser::Map& quality() { return store().mQualityParamsMap; }
    static kepTvParser::Map& pipeline() { return store().mAvParamsMap; }

    static void setCountry(bool japan) { quality()[kCountry] = japan ? "JP" : "US"; }
    [[nodiscard]] bool& mixes() { return mBackend.mMixerFlag; }
    [[nodiscard]] bool& forces() { return mBackend.mForcedDDPlus; }
    [[nodiscard]] bool& isBnoModel() { return mBackend.mSupportBnoModel; }
    [[nodiscard]] std::string& arcProfile() { return mBackend.mArcProfile; }
    void setCapabilities(const Texts& codecs) { mBackend.mEarcCapability = arrayOf(codecs); }

    /// The current output, with the user's digital mode.
    void select(KEP_AUDIO_SNDOUT_T output, const std::string& mode)
    {
        mBackend.mCurrentSoundout = output;
        quality()["soundOutputDigital"] = mode;
    }

    void expect(const Texts& expectedTold, const Lines& expectedLines, const std::string& what)
    {
        EXPECT_EQ(told(), expectedTold) << what;
        EXPECT_EQ(logLines(), expectedLines) << what;
    }
};

inline std::string earcWrite(int type, int mix)
{
    return "Sndout EARC Outputtype 2 " + std::to_string(type) + " 0 0 " + std::to_string(mix);
}

inline Lines earcLines(int type, int mix, bool refused = false)
{
    Lines lines = {said("setEArcOutputType", "set codec type: " + std::to_string(type) +
                                                 " for earc output type and mixer value is " +
                                                 std::to_string(mix))};
    if (refused) {
        lines.push_back(refusedByDriver());
        lines.push_back(
            notSet("setEArcOutputType", "Did not able to set the element: Sndout EARC Outputtype"));
    }
    return lines;
}
