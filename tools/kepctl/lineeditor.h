// SPDX-License-Identifier: Apache-2.0
// Lines that somebody types at a terminal, with editing, history and completion.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <histedit.h>

#include "completion.h"
#include "lineinput.h"

/// The editor of the terminal that standard input and output are at. One at a time, used on the
/// main thread; Ctrl-C empties the line, Ctrl-D on an empty one ends the input, Tab completes.
class LineEditor : public LineInput
{
public:
    using Complete = std::function<Completion(const std::string& typed)>;

    /// The history is read from that file and kept in it, readable by its owner only; where that is
    /// not possible, standard error is told.
    LineEditor(std::string prompt, std::filesystem::path history, Complete complete);
    ~LineEditor() override;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    std::optional<std::string> next() override;
    /// Takes the line that is being typed off the screen; it comes back when the main loop is idle.
    void makeRoom() override;

private:
    static LineEditor& of(EditLine* editor);
    static unsigned char complete(EditLine* editor, int key);
    static unsigned char abandon(EditLine* editor, int key);
    static int readCharacter(EditLine* editor, wchar_t* character);
    static char* prompt(EditLine* editor);

    void bindKeys();
    void loadHistory();
    void remember(const std::string& line);
    void show(const std::vector<std::string>& candidates);
    void restore();

    std::string mPrompt;
    const std::filesystem::path mHistoryFile;
    const Complete mComplete;
    std::unique_ptr<History, decltype(&history_end)> mHistory;
    std::unique_ptr<EditLine, decltype(&el_end)> mEditor;
    bool mHistoryIsKept = true;
    bool mAbandoned = false;          // Ctrl-C was pressed in the line
    std::atomic<bool> mTyping{false}; // the line is on the screen
    unsigned int mResizing = 0;       // GLib's number of the handler
};
