// SPDX-License-Identifier: Apache-2.0
// Hints for people. The library's lines are fixed; what they leave open is said here. The rules are
// asked in order, and the first that has something to say ends it.
#include "hints.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include <unistd.h>

#include <alsa/asoundlib.h>

#include "cardelements.h"
#include "cards.h"
#include "configuration.h"
#include "environment.h"
#include "faults.h"
#include "kepclient.h"
#include "names.h"
#include "spelling.h"

namespace
{

constexpr const char* kTelevision = "TV";
constexpr const char* kTelevisionCard = "hw:0";

bool isInitialize(const Operation& operation)
{
    return operation.answer == Answer::Status && std::string{operation.name} == "initialize";
}

/// Why the file that keeps the cards' values cannot be written; 0 when it can.
int stateFileFault()
{
    const std::filesystem::path path = virtualtv::stateFilePath();
    if (access(path.c_str(), R_OK | W_OK) == 0)
        return 0;
    if (errno != ENOENT)
        return errno;
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    return access(folder.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

/// 0 or the negative errno of opening that card.
int openCard(const std::string& card)
{
    const virtualtv::WithoutInjections asItIs;
    snd_ctl_t* control = nullptr;
    const int error = snd_ctl_open(&control, card.c_str(), 0);
    if (error >= 0)
        snd_ctl_close(control);
    return std::min(error, 0);
}

/// An element that the mixer's configuration names and its card lacks.
std::string missingElement(const std::string& card, const std::string& name)
{
    // The name may stand in quotes, as libasound allows.
    const std::string bare =
        name.size() > 1 && name.front() == '\'' ? name.substr(1, name.size() - 2) : name;
    const Names known = names::elements(card);
    if (known.empty() || std::find(known.begin(), known.end(), bare) != known.end())
        return "";
    const std::string hint = didYouMean(bare, known);
    return "the card \"" + card + "\", which device-cap.json names, has no element \"" + bare +
           "\"" + (hint.empty() ? "" : "; " + hint);
}

} // namespace

// clang-format off
const Hints::Rule Hints::kRules[] = {
    &Hints::notInitialised,
    &Hints::badConfiguration,
    &Hints::badNames,
    &Hints::badCards,
    &Hints::idleBackend,
    &Hints::silentFailure,
};
// clang-format on

void Hints::tell(const Operation& operation, std::span<const JValue> arguments,
                 const Outcome& outcome, const Happened& happened)
{
    if (!mShown)
        return;
    for (const Rule rule : kRules) {
        const Names sentences = (this->*rule)(operation, arguments, outcome, happened);
        for (const std::string& sentence : sentences)
            std::cerr << "    hint: " << sentence << "\n";
        if (!sentences.empty())
            return;
    }
}

void Hints::tellUnmetInjections() const
{
    if (!mShown)
        return;
    for (const virtualtv::Injection& injection : virtualtv::unmetInjections())
        std::cerr << "kepctl: " << (injection.origin.empty() ? "" : injection.origin + ": ")
                  << "the injection at \"" << injection.name << "\" never met its access\n";
}

Names Hints::notInitialised(const Operation& operation, std::span<const JValue>,
                            const Outcome& outcome, const Happened&)
{
    if (kepClient::getInstance()->getAudioObj() != nullptr || isInitialize(operation))
        return {};
    const bool nothing = operation.answer == Answer::Value && operation.argumentCount > 0;
    if (!nothing && !failed(operation, outcome.result))
        return {};
    return {mTold.count("initialize") != 0
                ? "no backend runs: initialize has failed before"
                : R"(nothing is initialised yet; a script starts with {"call": "initialize"})"};
}

Names Hints::badConfiguration(const Operation& operation, std::span<const JValue>,
                              const Outcome& outcome, const Happened&)
{
    if (!isInitialize(operation))
        return {};
    mTold.insert("initialize");
    const std::string fault = configurationFault();
    if (!fault.empty())
        return {fault};
    if (failed(operation, outcome.result))
        return {};
    mBackend = configuredBackend();
    const std::string capability = mBackend == kTelevision ? "" : capabilityFault();
    return capability.empty() ? Names{} : Names{capability};
}

Names Hints::badNames(const Operation& operation, std::span<const JValue> arguments, const Outcome&,
                      const Happened&)
{
    return mBackend == kTelevision ? misnamed(operation, arguments) : Names{};
}

Names Hints::badCards(const Operation& operation, std::span<const JValue>, const Outcome& outcome,
                      const Happened& happened)
{
    const bool wrong = happened.errorLogged || failed(operation, outcome.result);
    if (!wrong || happened.failedAccess)
        return {};
    const Names faults = cardFault();
    // It stays as it is until the end: once is enough.
    return !faults.empty() && mTold.insert(faults.front()).second ? faults : Names{};
}

Names Hints::cardFault() const
{
    if (!mHardware && stateFileFault() != 0)
        return {"the virtual cards' state file " + virtualtv::stateFilePath() +
                " cannot be written (" + strerror(stateFileFault()) +
                "); the variable KEP_VIRTUALTV_STATE names another"};
    if (!mHardware && !virtualtv::cards().problem.empty())
        return {"the card table cannot be used: " + virtualtv::cards().problem};
    const MixerNames mixer = mixerNames();
    const std::string card = mBackend == kTelevision ? kTelevisionCard : mixer.card;
    if (card.empty())
        return {};
    if (const int error = openCard(card); error < 0)
        return {"there is no card \"" + card + "\" (" + snd_strerror(error) + ")" +
                (mBackend == kTelevision ? "" : "; device-cap.json names it")};
    Names missing;
    if (mBackend != kTelevision)
        for (const std::string& element : {mixer.mute, mixer.volume})
            missing.push_back(missingElement(card, element));
    missing.erase(std::remove(missing.begin(), missing.end(), ""), missing.end());
    return missing;
}

Names Hints::idleBackend(const Operation& operation, std::span<const JValue>,
                         const Outcome& outcome, const Happened& happened)
{
    if (happened.anything || operation.argumentCount == 0 || failed(operation, outcome.result) ||
        mBackend == kTelevision || mBackend.empty())
        return {};
    return {"the backend " + mBackend + " does nothing for " + operation.name};
}

Names Hints::silentFailure(const Operation& operation, std::span<const JValue>,
                           const Outcome& outcome, const Happened& happened)
{
    if (!failed(operation, outcome.result) || happened.errorLogged || happened.failedAccess)
        return {};
    return {"the library gives no reason; --log-level 7 shows what it did"};
}
