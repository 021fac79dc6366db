// SPDX-License-Identifier: Apache-2.0
// The fixture of the tests that use kepctl as it is used.
#include "kepctltest.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <alsa/asoundlib.h>

namespace
{

std::string contentOf(const std::filesystem::path& path)
{
    std::ostringstream bytes;
    bytes << std::ifstream{path, std::ios::binary}.rdbuf();
    return bytes.str();
}

void redirect(int descriptor, const std::filesystem::path& path, int flags)
{
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (file < 0 || dup2(file, descriptor) < 0)
        _exit(126);
}

} // namespace

Texts linesOf(const std::string& text)
{
    Texts lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Texts eventsOf(const Execution& outcome, const std::string& kind)
{
    Texts found;
    for (const std::string& line : linesOf(outcome.output))
        if (line.starts_with(R"({"event":")" + kind + "\""))
            found.push_back(line);
    return found;
}

int shellStatus(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

[[noreturn]] void execute(const Texts& command)
{
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

Kepctl::Kepctl()
{
    // The program has to find its own way to the virtual cards and its configuration.
    for (const char* variable : {"ALSA_CONFIG_PATH", "ALSA_PLUGIN_DIR"})
        mOwnEnvironment.emplace_back(variable, getenv(variable));
    for (const char* variable :
         {"ALSA_CONFIG_PATH", "ALSA_PLUGIN_DIR", "KEP_CONFIG_DIR", "NO_COLOR"})
        unsetenv(variable);
    setenv("KEPCTL", kProgram, 1);
}

std::string Kepctl::file(const std::string& name, const std::string& content) const
{
    std::ofstream{directory() / name, std::ios::binary} << content;
    return directory() / name;
}

std::string Kepctl::script(const std::string& content) const
{
    return file("script.jsonl", content);
}

Execution Kepctl::execution(const Texts& command, const std::string& input) const
{
    const std::string inputFile = file("stdin", input);
    const pid_t process = fork();
    if (process == 0) {
        redirect(STDIN_FILENO, inputFile, O_RDONLY);
        redirect(STDOUT_FILENO, directory() / "stdout", O_WRONLY | O_CREAT | O_TRUNC);
        redirect(STDERR_FILENO, directory() / "stderr", O_WRONLY | O_CREAT | O_TRUNC);
        execute(command);
    }
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    return {shellStatus(status), contentOf(directory() / "stdout"),
            contentOf(directory() / "stderr")};
}

Execution Kepctl::kepctl(const Texts& arguments, const std::string& input) const
{
    Texts command = {kProgram};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return execution(command, input);
}

Execution Kepctl::shell(const std::string& command) const
{
    return execution({"/bin/sh", "-c", command});
}

Execution Kepctl::play(const std::string& content, const Texts& options) const
{
    Texts arguments = {"run", "--backend", "ALSA", "--format", "jsonl"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(script(content));
    return kepctl(arguments);
}

Execution Kepctl::playAsText(const std::string& content, const Texts& options) const
{
    Texts arguments = {"run", "--backend", "ALSA"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(script(content));
    return kepctl(arguments);
}

std::string Kepctl::shownOnTerminal(const std::string& content, const Texts& options,
                                    unsigned short columns) const
{
    Texts command = {kProgram, "run", "--backend", "ALSA"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(script(content));
    const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0)
        execute(command);
    std::string shown;
    std::array<char, 4096> part{};
    ssize_t got = 0;
    while ((got = read(terminal, part.data(), part.size())) > 0)
        shown.append(part.data(), static_cast<std::size_t>(got));
    close(terminal);
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_EQ(shellStatus(status), kPlayed) << shown;
    return shown;
}

long Kepctl::valueOf(const char* cardName, const char* element) const
{
    for (const auto& [name, value] : mOwnEnvironment)
        setenv(name.c_str(), value.c_str(), 1);
    snd_ctl_t* opened = nullptr;
    if (snd_ctl_open(&opened, cardName, 0) < 0)
        return -1;
    const std::unique_ptr<snd_ctl_t, decltype(&snd_ctl_close)> card{opened, &snd_ctl_close};
    snd_ctl_elem_value_t* got = nullptr;
    snd_ctl_elem_value_alloca(&got);
    snd_ctl_elem_value_set_interface(got, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_value_set_name(got, element);
    return snd_ctl_elem_read(card.get(), got) < 0 ? -1 : snd_ctl_elem_value_get_integer(got, 0);
}

Terminal::Terminal(const Texts& command, const std::string& prompt)
{
    const winsize size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    mProcess = forkpty(&mTerminal, nullptr, nullptr, &size);
    if (mProcess == 0) {
        setenv("TERM", "xterm", 1);
        execute(command);
    }
    awaitText(prompt);
}

Terminal::~Terminal()
{
    close(mTerminal);
    if (mProcess > 0) {
        kill(mProcess, SIGKILL);
        waitpid(mProcess, nullptr, 0);
    }
}

std::string Terminal::type(const std::string& keys, const std::string& wanted)
{
    EXPECT_EQ(write(mTerminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    return awaitText(wanted);
}

std::string Terminal::awaitText(const std::string& wanted)
{
    std::string shown;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{20};
    while (shown.find(wanted) == std::string::npos) {
        pollfd ready = {.fd = mTerminal, .events = POLLIN, .revents = 0};
        std::array<char, 4096> part{};
        if (poll(&ready, 1, 500) == 0 && std::chrono::steady_clock::now() < deadline)
            continue;
        const ssize_t got = ready.revents != 0 ? read(mTerminal, part.data(), part.size()) : 0;
        if (got <= 0) {
            ADD_FAILURE() << "never shown: " << wanted << "\nbut: " << shown;
            break;
        }
        shown.append(part.data(), static_cast<std::size_t>(got));
    }
    return shown;
}

int Terminal::end()
{
    int status = 0;
    EXPECT_EQ(waitpid(mProcess, &status, 0), mProcess);
    mProcess = -1;
    return shellStatus(status);
}
