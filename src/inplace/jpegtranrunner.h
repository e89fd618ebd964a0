#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>

namespace quillet {

// Raised when a rotation is asked for and no jpegtran program can be found.
class JpegtranMissing : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Runs the external jpegtran tool. Virtual so that tests can put a failing or
// recording runner in its place.
class JpegtranRunner {
  public:
    // Environment variable naming the program to run instead of the one on PATH.
    static constexpr char EnvironmentVariable[] = "QUILLET_JPEGTRAN";

    // Finds the program once: QUILLET_JPEGTRAN when set, else jpegtran on PATH.
    JpegtranRunner();
    explicit JpegtranRunner(QString program);
    virtual ~JpegtranRunner() = default;

    // Full path of the program, empty when none was found.
    QString program() const { return m_program; }
    // Throws JpegtranMissing, with a message saying how to get the tool, when
    // there is no program to run.
    void requireProgram() const;

    // Runs the program with the arguments and waits for it. Returns its exit
    // status, or -1 when it could not be started or did not exit normally.
    // The child is killed when this process dies, so that it never writes on
    // after an interrupted run.
    virtual int run(const QStringList& arguments);

    static QString locate();

  private:
    QString m_requested; // QUILLET_JPEGTRAN as it was when the program was looked up
    QString m_program;
};

} // namespace quillet
