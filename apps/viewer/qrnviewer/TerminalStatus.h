#pragma once

#include "qrn/IStatusManager.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace qrnviewer {

// Shows progress on a terminal: on a terminal one line redrawn in place ("reading
// [#####.....]  52%"); elsewhere (a log, CI) a line at each tenth, so that logs stay short.
// When a task ends, the time it took follows its bar.
class TerminalStatus : public qrn::IStatusManager {
public:
    explicit TerminalStatus(std::FILE* out = stderr);
    ~TerminalStatus() override;

    void setStatus(const std::wstring& text) override;
    void setProgress(const std::wstring& task, int percent) override;
    void endProgress() override;

private:
    void draw();

    std::FILE* m_out;
    bool m_interactive;
    std::wstring m_task;
    int m_percent = -1;
    int m_lastShown = -1;
    bool m_open = false; // a progress line is on screen without its newline
    std::chrono::steady_clock::time_point m_lastDraw;
    std::chrono::steady_clock::time_point m_started; // of the task
};

} // namespace qrnviewer
