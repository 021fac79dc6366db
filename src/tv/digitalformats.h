// SPDX-License-Identifier: Apache-2.0
// Which formats go out on optical, ARC and eARC: values in, the driver's numbers out. Knows no
// television, no store and no log.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "kepaudiotypes.h"

/// What goes out on eARC.
struct EarcFormat {
    sndout_earc_output_codec_type codec;
    sndout_earc_output_mix_option mix;

    bool operator==(const EarcFormat&) const = default;
};

/// What the formats follow from, as it stands when they are asked for.
struct DigitalFormats {
    bool bnoModel = false;     // has no numbers of its own for ARC in Japan
    bool mixed = false;        // other sounds are mixed in
    bool forcedDDPlus = false; // Dolby Digital Plus, whatever mode "auto" would choose
    std::string country = {};
    std::string arcProfile = {}; // what the receiver on ARC can decode
    std::string codec = {};      // of the current pipeline; "" when it is not known
    std::string source = {};     // where it comes from

    /// Whether the receiver on eARC announced that capability. The formats ask one after the other,
    /// and for none after the first that is there.
    using CanDecode = std::function<bool(const char* capability)>;

    static constexpr EarcFormat kPcm{SNDOUT_EARC_PCM, SNDOUT_EARC_MIX_ON};

    /// The numbers of a digital mode ("passThrough", "auto", "pcm"); 0 for an unknown one.
    [[nodiscard]] int optic(std::string_view mode) const;
    [[nodiscard]] int arc(std::string_view mode) const;

    [[nodiscard]] bool isJapan() const;
    [[nodiscard]] bool isDts() const;
    /// Every codec that is not known to be compressed counts as PCM, an unknown one included.
    [[nodiscard]] bool isPcm() const;

    /// The codec as it is; nothing when the receiver cannot decode it.
    [[nodiscard]] std::optional<EarcFormat> passedThrough(const CanDecode& canDecode) const;
    /// AAC, which Japan prefers for what it broadcasts; nothing for other sources, or when the
    /// receiver cannot decode it. For Japan only: the country is not looked at.
    [[nodiscard]] std::optional<EarcFormat> aacInJapan(const CanDecode& canDecode) const;
    /// What a compressed codec is re-encoded to: the best that the receiver can decode, else PCM.
    [[nodiscard]] static EarcFormat reEncoded(const CanDecode& canDecode);
    [[nodiscard]] static EarcFormat reEncodedDts(const CanDecode& canDecode);
};
