// SPDX-License-Identifier: Apache-2.0
// Parses JSON texts and files with json-c, made strict by a check of the text in front of it.
#include "jdomparser.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>
#include <json-c/json.h>

#include "jsonlexicon.h"

namespace
{

struct TokenerDeleter {
    void operator()(json_tokener* tokener) const noexcept { json_tokener_free(tokener); }
};

/// A file descriptor that closes itself.
class File
{
public:
    explicit File(int descriptor) noexcept : mDescriptor(descriptor) {}
    ~File()
    {
        if (mDescriptor >= 0)
            close(mDescriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    [[nodiscard]] int descriptor() const noexcept { return mDescriptor; }

private:
    int mDescriptor;
};

std::string systemReason(int error)
{
    std::array<char, 128> buffer{};
    return strerror_r(error, buffer.data(), buffer.size());
}

/// Reads a regular file whole; returns why it could not, "" on success.
std::string readRegularFile(const std::string& path, std::string& text)
{
    if (path.find('\0') != std::string::npos)
        return systemReason(ENOENT); // the system would see only what stands before it
    struct stat status = {};
    // Looked at before it is opened: opening a FIFO would wait for a writer, opening a device can
    // act.
    if (stat(path.c_str(), &status) != 0)
        return systemReason(errno);
    if (!S_ISREG(status.st_mode))
        return "not a regular file";
    const File file{open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
    if (file.descriptor() < 0 || fstat(file.descriptor(), &status) != 0)
        return systemReason(errno);
    if (!S_ISREG(status.st_mode)) // replaced in between
        return "not a regular file";

    constexpr std::size_t kMost = JDomParser::kMaxFileBytes + 1;
    text.resize(std::min(static_cast<std::size_t>(status.st_size) + 1, kMost));
    std::size_t length = 0;
    while (length < kMost) {
        if (length == text.size()) // grown meanwhile, or of /proc, where files tell no size
            text.resize(std::min(2 * length + 4096, kMost));
        const ssize_t got = read(file.descriptor(), text.data() + length, text.size() - length);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return systemReason(errno);
        if (got == 0)
            break;
        length += static_cast<std::size_t>(got);
    }
    text.resize(length);
    return length > JDomParser::kMaxFileBytes ? "file larger than 1 MiB" : "";
}

} // namespace

JValue JDomParser::fail(std::string reason)
{
    mErrorText = std::move(reason);
    if (mErrorText.size() > kMaxErrorBytes)
        mErrorText.resize(kMaxErrorBytes);
    return JValue::invalid();
}

JValue JDomParser::parse(std::string_view text)
{
    mErrorText.clear();
    if (text.size() > INT32_MAX)
        return fail("text too long");
    if (g_utf8_validate_len(text.data(), text.size(), nullptr) == FALSE)
        return fail("not valid UTF-8");
    const char* fault = findLexicalFault(text, kMaxDepth);
    if (*fault != '\0')
        return fail(fault);

    // The depth has been checked; json-c needs one level for a scalar in the innermost container.
    const std::unique_ptr<json_tokener, TokenerDeleter> tokener{json_tokener_new_ex(kMaxDepth + 1)};
    if (!tokener)
        throw std::bad_alloc{};
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT);
    json_object* root =
        json_tokener_parse_ex(tokener.get(), text.data(), static_cast<int>(text.size()));
    const std::size_t end = json_tokener_get_parse_end(tokener.get());
    // A number at the end of the text is complete only once json-c sees that nothing follows.
    if (json_tokener_get_error(tokener.get()) == json_tokener_continue)
        root = json_tokener_parse_ex(tokener.get(), "", 1);
    const json_tokener_error error = json_tokener_get_error(tokener.get());
    if (error != json_tokener_success)
        return fail(std::string{json_tokener_error_desc(error)} + " at byte " +
                    std::to_string(end));
    return {root, 1};
}

JValue JDomParser::parseFile(const std::string& path)
{
    std::string text;
    std::string reason = readRegularFile(path, text);
    return reason.empty() ? parse(text) : fail(std::move(reason));
}
