// SPDX-License-Identifier: Apache-2.0
// The line editor: libedit, with a main loop where it would block.
#include "lineeditor.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iostream>
#include <utility>

#include <unistd.h>

#include <glib-unix.h>

#include "terminal.h"

namespace
{

constexpr int kHistoryLines = 1000;
constexpr std::size_t kGap = 2; // between columns of candidates

std::string commonStart(const std::vector<std::string>& words)
{
    std::string common = words.front();
    for (const std::string& word : words)
        common.resize(static_cast<std::size_t>(
            std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first -
            common.begin()));
    return common;
}

EditLine* openEditor()
{
    setlocale(LC_CTYPE, ""); // by which it takes bytes for characters
    return el_init("kepctl", stdin, stdout, stderr);
}

} // namespace

LineEditor::LineEditor(std::string prompt, std::filesystem::path history, Complete complete)
    : mPrompt(std::move(prompt)), mHistoryFile(std::move(history)), mComplete(std::move(complete)),
      mHistory(history_init(), &history_end), mEditor(openEditor(), &el_end)
{
    el_set(mEditor.get(), EL_CLIENTDATA, this);
    el_set(mEditor.get(), EL_PROMPT, &LineEditor::prompt);
    el_set(mEditor.get(), EL_GETCFN, &LineEditor::readCharacter);
    el_set(mEditor.get(), EL_EDITOR, "emacs");
    loadHistory();
    bindKeys();
    el_source(mEditor.get(), nullptr); // the user's own ~/.editrc
    mResizing = g_unix_signal_add(
        SIGWINCH,
        [](gpointer editor) -> gboolean {
            el_resize(static_cast<LineEditor*>(editor)->mEditor.get());
            return G_SOURCE_CONTINUE;
        },
        this);
}

LineEditor::~LineEditor()
{
    g_source_remove(mResizing);
    g_idle_remove_by_data(this);
}

std::optional<std::string> LineEditor::next()
{
    for (;;) {
        mAbandoned = false;
        mTyping = true;
        int count = 0;
        // Before the prompt is seen: whoever answers it at once is not to meet the terminal as it
        // is between the lines.
        el_set(mEditor.get(), EL_PREP_TERM, 1);
        const char* typed = el_gets(mEditor.get(), &count);
        mTyping = false;
        if (typed == nullptr || count <= 0) {
            fputs("\n", stdout);
            return std::nullopt;
        }
        if (mAbandoned)
            continue;
        std::string line{typed, static_cast<std::size_t>(count)};
        line.erase(line.find_last_not_of("\r\n") + 1);
        remember(line);
        return line;
    }
}

void LineEditor::makeRoom()
{
    if (!mTyping.exchange(false))
        return;
    fputs("\r\033[K", stdout);
    fflush(stdout);
    g_idle_add(
        [](gpointer editor) -> gboolean {
            static_cast<LineEditor*>(editor)->restore();
            return G_SOURCE_REMOVE;
        },
        this);
}

void LineEditor::restore()
{
    mTyping = true;
    el_set(mEditor.get(), EL_REFRESH);
}

// --- History

void LineEditor::loadHistory()
{
    HistEvent event;
    history(mHistory.get(), &event, H_SETSIZE, kHistoryLines);
    history(mHistory.get(), &event, H_SETUNIQUE, 1);
    history(mHistory.get(), &event, H_LOAD, mHistoryFile.c_str()); // none yet is no mistake
    el_set(mEditor.get(), EL_HIST, &history, mHistory.get());
}

void LineEditor::remember(const std::string& line)
{
    if (line.find_first_not_of(" \t") == std::string::npos)
        return;
    HistEvent event;
    history(mHistory.get(), &event, H_ENTER, line.c_str());
    if (!mHistoryIsKept)
        return;
    std::error_code error;
    std::filesystem::create_directories(mHistoryFile.parent_path(), error);
    errno = error.value();
    mHistoryIsKept = !error && history(mHistory.get(), &event, H_SAVE, mHistoryFile.c_str()) >= 0;
    if (!mHistoryIsKept)
        std::cerr << "kepctl: " << mHistoryFile.string() << ": " << strerror(errno)
                  << "; the history is not kept\n";
}

// --- What libedit calls

LineEditor& LineEditor::of(EditLine* editor)
{
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

void LineEditor::bindKeys()
{
    EditLine* editor = mEditor.get();
    // While a line is typed, Ctrl-C is a key; while its request runs, it is a signal.
    el_set(editor, EL_SETTY, "-d", "-isig", nullptr);
    el_set(editor, EL_ADDFN, "kepctl-complete", "completes the word", &LineEditor::complete);
    el_set(editor, EL_ADDFN, "kepctl-abandon", "begins a new line", &LineEditor::abandon);
    el_set(editor, EL_BIND, "^I", "kepctl-complete", nullptr);
    el_set(editor, EL_BIND, "^C", "kepctl-abandon", nullptr);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
}

char* LineEditor::prompt(EditLine* editor)
{
    return of(editor).mPrompt.data();
}

int LineEditor::readCharacter(EditLine*, wchar_t* character)
{
    std::mbstate_t state{};
    for (;;) {
        awaitInput();
        char byte = 0;
        const ssize_t got = read(STDIN_FILENO, &byte, 1);
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (got <= 0)
            return static_cast<int>(got);
        const std::size_t length = mbrtowc(character, &byte, 1, &state);
        if (length == static_cast<std::size_t>(-1)) { // not of this locale: shown as it is
            *character = static_cast<unsigned char>(byte);
            return 1;
        }
        if (length != static_cast<std::size_t>(-2))
            return 1;
    }
}

unsigned char LineEditor::abandon(EditLine* editor, int)
{
    of(editor).mAbandoned = true;
    const LineInfo* line = el_line(editor);
    el_cursor(editor, static_cast<int>(line->lastchar - line->cursor));
    el_insertstr(editor, "^C");
    el_push(editor, "\n");
    return CC_REFRESH;
}

unsigned char LineEditor::complete(EditLine* editor, int)
{
    LineEditor& self = of(editor);
    const LineInfo* line = el_line(editor);
    const Completion found = self.mComplete({line->buffer, line->cursor});
    if (found.candidates.empty())
        return CC_REFRESH_BEEP;
    const bool single = found.candidates.size() == 1;
    const std::string more =
        commonStart(found.candidates).substr(found.typed) + (single ? found.suffix : "");
    if (!more.empty()) {
        el_insertstr(editor, more.c_str());
        return CC_REFRESH;
    }
    if (single)
        return CC_REFRESH_BEEP;
    self.show(found.candidates);
    return CC_NORM;
}

/// Lists them below the line, and the line again.
void LineEditor::show(const std::vector<std::string>& candidates)
{
    std::size_t widest = 0;
    for (const std::string& candidate : candidates)
        widest = std::max(widest, candidate.size());
    const std::size_t columns = std::max<std::size_t>(1, terminalWidth() / (widest + kGap));
    const std::size_t rows = (candidates.size() + columns - 1) / columns;
    std::string text = "\n";
    for (std::size_t row = 0; row < rows; ++row) {
        std::string shown;
        for (std::size_t i = row; i < candidates.size(); i += rows) {
            shown.resize(std::max(shown.size(), i / rows * (widest + kGap)), ' ');
            shown += candidates[i];
        }
        text += shown + "\n";
    }
    fputs(text.c_str(), stdout);
    el_set(mEditor.get(), EL_REFRESH);
}
