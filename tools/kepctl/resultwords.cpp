// SPDX-License-Identifier: Apache-2.0
// Results in words: the codes as kepaudio.h documents them.
#include "resultwords.h"

#include "kepaudio.h"

namespace
{

// clang-format off
constexpr ResultCode kRows[] = {
    {Answer::Status, KEP_STATUS_FAILED,           "failed",                   nullptr},
    {Answer::Status, KEP_STATUS_OK,               "stopped",                  "deinitialize"},
    {Answer::Status, KEP_STATUS_OK,               "started",                  nullptr},
    {Answer::Code,   KEP_RESULT_OK,               "done",                     nullptr},
    {Answer::Code,   KEP_RESULT_UNKNOWN_OUTPUT,   "failed: unknown output",   nullptr},
    {Answer::Code,   KEP_RESULT_FAILED,           "failed",                   nullptr},
    {Answer::Code,   KEP_RESULT_INVALID_RESOURCE, "failed: invalid resource", nullptr},
    {Answer::Code,   KEP_RESULT_INVALID_OUTPUT,   "failed: invalid output",   nullptr},
};
// clang-format on

} // namespace

std::string resultWords(const Operation& operation, const JValue& result)
{
    const auto code = result.asNumber<std::int64_t>();
    for (const ResultCode& row : kRows)
        if (operation.answer == row.answer && code == row.code &&
            (row.operation == nullptr || std::string{operation.name} == row.operation))
            return row.words;
    return failed(operation, result) ? "failed" : "";
}

std::span<const ResultCode> resultCodes()
{
    return kRows;
}
