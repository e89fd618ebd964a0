#pragma once

#include <functional>
#include <thread>

namespace quillet {

// Ctrl-C, Ctrl-Z and fg for a running batch. The signal handlers only write a
// byte to a pipe; a thread of this object reads it and calls the matching
// function, so the functions may lock and print. A second Ctrl-C calls
// `abort` and ends the process at once with status 130. Ctrl-Z calls `stop`
// and then stops the process; `resume` follows when it continues.
class ProcessSignals {
  public:
    struct Handlers {
        std::function<void()> interrupt;
        std::function<void()> stop;
        std::function<void()> resume;
        std::function<void()> abort;
    };

    explicit ProcessSignals(Handlers handlers);
    // Puts the default actions back.
    ~ProcessSignals();
    ProcessSignals(const ProcessSignals&) = delete;
    ProcessSignals& operator=(const ProcessSignals&) = delete;

  private:
    void run();

    Handlers m_handlers;
    std::thread m_thread;
};

} // namespace quillet
