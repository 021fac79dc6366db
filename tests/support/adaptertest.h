// SPDX-License-Identifier: Apache-2.0
// What the tests of the middleware adapters share: an operation's whole contract as one table row.
// The fixture runs each row with every call succeeding, with each call failing, and with all
// failing.
#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "keptvparser.h"
#include "televisiontest.h"

/// One middleware call of an operation, with what is logged around it.
struct Step {
    Lines before = {};
    std::string call; // "gain.setInputVolume(2, 40)"
    Lines onSuccess = {};
    Lines onFailure = {};
};

enum class AfterFailure { GoesOn, Stops };

/// What a row does; nothing is answered by an operation without a result.
class Action
{
public:
    template <typename Run>
    Action(Run run)
    {
        if constexpr (std::is_void_v<decltype(run())>)
            mRun = [run] {
                run();
                return std::optional<bool>{};
            };
        else
            mRun = [run] { return std::optional<bool>{run()}; };
    }

    [[nodiscard]] std::optional<bool> operator()() const { return mRun(); }

private:
    std::function<std::optional<bool>()> mRun;
};

struct Operation {
    const char* what;
    Action act;
    std::vector<Step> steps;
    AfterFailure afterFailure = AfterFailure::GoesOn;
    Lines lastWhenFailed = {}; // logged once, when any step has failed
};

/// How a number of a request reaches the middleware.
struct NumberConversion {
    const char* json;
    int number;
};
inline constexpr NumberConversion kNumberConversions[] = {
    {"0", 0},
    {"40", 40},
    {"-40", -40},
    {"3.7", 3},
    {"-3.7", -3},
    {"2147483647", 2147483647},
    {"2147483648", 2147483647},
    {"-99999999999", -2147483647 - 1},
    {"1e300", 2147483647},
    {"\"40\"", 0},
    {"true", 0},
    {"null", 0},
    {"[40]", 0},
    {R"({"a":40})", 0},
};

/// Payloads without any key, and `more` given as JSON.
inline std::vector<JValue> payloadsWithoutKeys(const Texts& more = {})
{
    std::vector<JValue> payloads = {JValue::object(), JValue::array(), JValue{"on"},     JValue{5},
                                    JValue{true},     JValue{},        JValue::invalid()};
    for (const std::string& text : more)
        payloads.push_back(json(text));
    return payloads;
}

// What the store holds after `fillStore`, as a middleware call shows it.
inline constexpr const char* kQualityParams = R"({"B":"2","a":"quality"})";
inline constexpr const char* kAvParams = R"({"B":"3","a":"pipeline"})";
inline constexpr const char* kAencAvParams = R"({"B":"4","a":"recording"})";

class AdapterTest : public TelevisionTest
{
protected:
    static constexpr int kRefused = 7; // any status but 0

    AdapterTest() { connectLog(); }

    /// Gives each of the three maps entries of its own.
    static void fillStore()
    {
        kepTvParser& store = *kepTvParser::getInstance();
        store.mQualityParamsMap = {{"a", "quality"}, {"B", "2"}};
        store.mAvParamsMap = {{"a", "pipeline"}, {"B", "3"}};
        store.mAencAvParamsMap = {{"a", "recording"}, {"B", "4"}};
    }

    /// There is one object, and it is always the same.
    template <typename Adapter>
    static void expectOneInstance()
    {
        ASSERT_NE(Adapter::getInstance(), nullptr);
        EXPECT_EQ(Adapter::getInstance(), Adapter::getInstance());
    }

    /// The step that binds the middleware says so each time, and calls nothing.
    void expectInitialising(const Action& initialise, const LogLine& line)
    {
        for (int i = 0; i < 2; ++i)
            expectTrace("initialising", [&] { EXPECT_EQ(initialise(), true); }, {}, {line});
    }

    /// Runs each row as below, on a full store.
    void expectAllOutcomes(const std::vector<Operation>& operations)
    {
        fillStore();
        for (const Operation& operation : operations)
            expectAllOutcomes(operation);
    }
    void expectErrorsOnly(const std::vector<Operation>& operations)
    {
        fillStore();
        for (const Operation& operation : operations)
            expectErrorsOnly(operation);
    }

    /// Runs the row with no call failing, each one failing alone, and all failing.
    void expectAllOutcomes(const Operation& operation)
    {
        std::set<std::string> all;
        expectOutcome(operation, {});
        for (const Step& step : operation.steps) {
            all.insert(nameOf(step.call));
            expectOutcome(operation, {nameOf(step.call)});
        }
        if (operation.steps.size() > 1)
            expectOutcome(operation, all);
    }

    /// The same with nothing but errors admitted.
    void expectErrorsOnly(const Operation& operation)
    {
        admit(kLogError);
        expectAllOutcomes(operation);
        admit(kLogDebug);
    }

    /// Runs `act` and compares all that it leaves in the journal and in the log.
    void expectTrace(const std::string& what, const Action& act, const Texts& calls,
                     const Lines& lines)
    {
        forget();
        static_cast<void>(act());
        EXPECT_EQ(middlewareCalls(), calls) << what;
        EXPECT_EQ(logLines(), lines) << what;
    }

private:
    static std::string nameOf(const std::string& call) { return call.substr(0, call.find('(')); }

    static bool admitted(const LogLine& line)
    {
        return line.level <= LogGetLevel(LogGetContext("kep"));
    }

    void expectOutcome(const Operation& operation, const std::set<std::string>& failing)
    {
        std::string what = operation.what;
        Texts calls;
        Lines lines;
        const auto expectLines = [&lines](const Lines& more) {
            std::copy_if(more.begin(), more.end(), std::back_inserter(lines), admitted);
        };
        bool failed = false;
        for (const Step& step : operation.steps) {
            const bool fails = failing.count(nameOf(step.call)) != 0;
            what += fails ? " / fails: " + nameOf(step.call) : "";
            expectLines(step.before);
            calls.push_back(step.call + (fails ? " -> " + std::to_string(kRefused) : ""));
            expectLines(fails ? step.onFailure : step.onSuccess);
            failed = failed || fails;
            if (fails && operation.afterFailure == AfterFailure::Stops)
                break;
        }
        if (failed)
            expectLines(operation.lastWhenFailed);

        for (const std::string& call : failing)
            injectMiddleware(call, kRefused);
        forget();
        const std::optional<bool> result = operation.act();
        clearInjections();
        EXPECT_EQ(result.value_or(!failed), !failed) << what;
        EXPECT_EQ(middlewareCalls(), calls) << what;
        EXPECT_EQ(logLines(), lines) << what;
    }
};
