// SPDX-License-Identifier: Apache-2.0
// The parser that makes JSON documents from texts and files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "jvalue.h"
#include "platformexport.h"

/// What a document has to look like. This platform knows the one schema that accepts everything.
class KEP_PLATFORM_EXPORT JSchema
{
public:
    static JSchema acceptAll() noexcept { return {}; }

private:
    JSchema() noexcept = default;
};

/// Parses strict JSON: one value, nothing after it but blanks, no comments, valid UTF-8, containers
/// at most kMaxDepth deep, no NUL character in a key. A key given twice keeps its first
/// place and its last value.
class KEP_PLATFORM_EXPORT JDomParser
{
public:
    static constexpr int kMaxDepth = 64;
    static_assert(kMaxDepth < JValue::kMaxDepth);
    static constexpr std::size_t kMaxFileBytes = std::size_t{1} << 20;
    static constexpr std::size_t kMaxErrorBytes = 512;

    explicit JDomParser(JSchema schema) noexcept { static_cast<void>(schema); }

    /// The value of a text of at most 2 GiB; invalid on failure, with the reason in `errorText`.
    JValue parse(std::string_view text);
    /// The same for a file of at most kMaxFileBytes. Only regular files are opened.
    JValue parseFile(const std::string& path);
    /// Why the last parse failed, at most kMaxErrorBytes bytes; empty after a success.
    [[nodiscard]] const std::string& errorText() const noexcept { return mErrorText; }

private:
    JValue fail(std::string reason);

    std::string mErrorText;
};
