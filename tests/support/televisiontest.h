// SPDX-License-Identifier: Apache-2.0
// The fixture of all tests that act on the virtual television: it records what is logged and what
// the television is told, and gives each test a configuration directory and card values of its own.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "jsonvalues.h"
#include "loglines.h"

/// A write of a control element, or a stage of one that an injection made fail.
struct ControlEvent {
    std::string card;
    std::string what; // element, or stage
    std::vector<int> values;
    int status = 0;

    bool operator==(const ControlEvent&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const ControlEvent& event);

class TelevisionTest : public testing::Test
{
protected:
    TelevisionTest();
    ~TelevisionTest() override;

    // --- Preparing

    [[nodiscard]] const std::filesystem::path& directory() const { return mDirectory; }
    /// Writes a file into the configuration directory (KEP_CONFIG_DIR).
    void writeConfig(const std::string& fileName, const std::string& content) const;
    /// Writes a kep-config.json that names this backend.
    void configureBackend(const std::string& backend) const;
    /// The level that the log context admits, 7 at first.
    static void admit(int level);
    /// Makes the library's log context known, as the client's initialize does.
    static void connectLog();
    /// Makes an access to a card fail: stage "open", "load", "info" or "write".
    static void injectCard(const std::string& stage, int status, const std::string& element = "*");
    static void injectMiddleware(const std::string& operation, int status);
    static void clearInjections();

    // --- Looking

    /// All log lines since the last `forget`.
    [[nodiscard]] const Lines& logLines() const { return mLogLines; }
    [[nodiscard]] Lines logLines(int level) const;
    /// All events of the virtual television since the last `forget`.
    [[nodiscard]] const std::vector<JValue>& events() const { return mEvents; }
    [[nodiscard]] std::vector<ControlEvent> controlEvents() const;
    /// The middleware calls as "library.operation(arguments)", with " -> status" when that is not
    /// 0.
    [[nodiscard]] Texts middlewareCalls() const;
    void forget();

private:
    std::filesystem::path mDirectory;
    Lines mLogLines;
    std::vector<JValue> mEvents;
};
