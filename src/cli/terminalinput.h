#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include <termios.h>

namespace quillet {

// Single keys from a terminal on standard input, read on a thread of its own
// with echo and line editing off. Keys go to a prompt that waits for one
// (readKey); when none waits, the pause key ('p' or space) calls onPause.
// The terminal's own mode comes back on suspend() and on destruction.
class TerminalInput {
  public:
    explicit TerminalInput(std::function<void()> onPause);
    ~TerminalInput();
    TerminalInput(const TerminalInput&) = delete;
    TerminalInput& operator=(const TerminalInput&) = delete;

    // Whether standard input is a terminal we read keys from.
    bool active() const { return m_active; }
    // The next key; -1 once input has ended.
    int readKey();
    // Gives the terminal back (before stopping the process) and takes it again.
    void suspend();
    void resume();

  private:
    void run();

    std::function<void()> m_onPause;
    bool m_active = false;
    termios m_saved{};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<int> m_keys;
    int m_waiting = 0;
    bool m_closed = false;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace quillet
