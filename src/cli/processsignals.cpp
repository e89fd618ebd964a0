#include "cli/processsignals.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace quillet {

namespace {

int pipeFds[2] = {-1, -1};

extern "C" void onSignal(int signal) {
    const char code = signal == SIGINT ? 'i' : signal == SIGTSTP ? 'z' : 'c';
    const int saved = errno;
    [[maybe_unused]] const ssize_t n = write(pipeFds[1], &code, 1);
    errno = saved;
}

void install(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

ProcessSignals::ProcessSignals(Handlers handlers) : m_handlers(std::move(handlers)) {
    if (pipe(pipeFds) != 0)
        return;
    fcntl(pipeFds[1], F_SETFL, O_NONBLOCK);
    install(SIGINT, onSignal);
    install(SIGTSTP, onSignal);
    install(SIGCONT, onSignal);
    m_thread = std::thread([this] { run(); });
}

ProcessSignals::~ProcessSignals() {
    if (!m_thread.joinable())
        return;
    install(SIGINT, SIG_DFL);
    install(SIGTSTP, SIG_DFL);
    install(SIGCONT, SIG_DFL);
    const char quit = 'q';
    [[maybe_unused]] const ssize_t n = write(pipeFds[1], &quit, 1);
    m_thread.join();
    close(pipeFds[0]);
    close(pipeFds[1]);
    pipeFds[0] = pipeFds[1] = -1;
}

void ProcessSignals::run() {
    int interrupts = 0;
    for (;;) {
        char code = 0;
        const ssize_t n = read(pipeFds[0], &code, 1);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0 || code == 'q')
            return;
        if (code == 'i') {
            if (++interrupts > 1) {
                if (m_handlers.abort)
                    m_handlers.abort();
                _exit(130);
            }
            if (m_handlers.interrupt)
                m_handlers.interrupt();
        } else if (code == 'z') {
            if (m_handlers.stop)
                m_handlers.stop();
            raise(SIGSTOP);
        } else if (code == 'c') {
            if (m_handlers.resume)
                m_handlers.resume();
        }
    }
}

} // namespace quillet
