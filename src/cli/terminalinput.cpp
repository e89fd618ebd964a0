#include "cli/terminalinput.h"

#include <poll.h>
#include <unistd.h>

namespace quillet {

TerminalInput::TerminalInput(std::function<void()> onPause) : m_onPause(std::move(onPause)) {
    if (!isatty(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &m_saved) != 0)
        return;
    m_active = true;
    resume();
    m_thread = std::thread([this] { run(); });
}

TerminalInput::~TerminalInput() {
    if (!m_active)
        return;
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_thread.join();
    suspend();
}

void TerminalInput::suspend() {
    if (m_active)
        tcsetattr(STDIN_FILENO, TCSANOW, &m_saved);
}

void TerminalInput::resume() {
    if (!m_active)
        return;
    termios raw = m_saved;
    raw.c_lflag &= ~tcflag_t(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
}

void TerminalInput::run() {
    for (;;) {
        {
            std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
        }
        pollfd input{STDIN_FILENO, POLLIN, 0};
        // A short timeout lets the destructor stop the thread promptly.
        if (poll(&input, 1, 100) <= 0)
            continue;
        unsigned char key = 0;
        const ssize_t n = read(STDIN_FILENO, &key, 1);
        std::unique_lock lock(m_mutex);
        if (n <= 0) {
            m_closed = true;
            m_changed.notify_all();
            return;
        }
        if (m_waiting > 0) {
            m_keys.push_back(key);
            m_changed.notify_all();
        } else if (key == 'p' || key == 'P' || key == ' ') {
            lock.unlock();
            m_onPause();
        }
    }
}

int TerminalInput::readKey() {
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    m_changed.wait(lock, [this] { return !m_keys.empty() || m_closed; });
    --m_waiting;
    if (m_keys.empty())
        return -1;
    const int key = m_keys.front();
    m_keys.pop_front();
    return key;
}

} // namespace quillet
