#include "qrnviewer/TerminalStatus.h"

#include "qrnplatform/Text.h"

#include <algorithm>
#include <unistd.h>

namespace qrnviewer {

TerminalStatus::TerminalStatus(std::FILE* out)
    : m_out(out), m_interactive(isatty(fileno(out)) != 0) {}

TerminalStatus::~TerminalStatus() {
    endProgress();
}

void TerminalStatus::setStatus(const std::wstring& text) {
    if (m_open) {
        std::fputc('\n', m_out);
        m_open = false;
    }
    std::fprintf(m_out, "%s\n", qrnplatform::Text::toUtf8(text).c_str());
    std::fflush(m_out);
}

void TerminalStatus::setProgress(const std::wstring& task, int percent) {
    percent = std::clamp(percent, 0, 100);
    if (task != m_task) {
        endProgress();
        m_task = task;
        m_lastShown = -1;
        m_started = std::chrono::steady_clock::now();
    }
    if (percent == m_percent)
        return;
    m_percent = percent;
    auto now = std::chrono::steady_clock::now();
    if (m_interactive) {
        // Redraw at most 20 times a second.
        if (percent < 100 && m_lastShown >= 0 && now - m_lastDraw < std::chrono::milliseconds(50))
            return;
    } else if (m_lastShown >= 0 && percent / 10 == m_lastShown / 10 && percent < 100) {
        return;
    }
    m_lastDraw = now;
    draw();
}

void TerminalStatus::endProgress() {
    if (m_task.empty())
        return;
    if (m_percent >= 0 && m_lastShown != m_percent)
        draw();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - m_started;
    if (m_open)
        std::fprintf(m_out, "  %.2f s\n", took.count());
    else
        std::fprintf(m_out, "%-10s %.2f s\n", qrnplatform::Text::toUtf8(m_task).c_str(),
                     took.count());
    std::fflush(m_out);
    m_open = false;
    m_task.clear();
    m_percent = -1;
    m_lastShown = -1;
}

void TerminalStatus::draw() {
    const int width = 30;
    int filled = m_percent * width / 100;
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.append(static_cast<std::size_t>(width - filled), '.');
    std::string task = qrnplatform::Text::toUtf8(m_task);
    if (m_interactive) {
        std::fprintf(m_out, "\r%-10s [%s] %3d%%", task.c_str(), bar.c_str(), m_percent);
        m_open = true;
    } else {
        std::fprintf(m_out, "%-10s [%s] %3d%%\n", task.c_str(), bar.c_str(), m_percent);
    }
    std::fflush(m_out);
    m_lastShown = m_percent;
}

} // namespace qrnviewer
