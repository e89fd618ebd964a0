#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillet {

// Facts about the running system and the process, and running a command for
// its output.
class SystemUtility {
  public:
    // The system version code, four binary-coded decimal digits (0x1039 is
    // 10.3.9). The code the rest of the program compares against is fixed
    // here: every system we run on renders what the newest code stands for.
    static constexpr int SystemVersion = 0x1039;

    static int systemVersion() { return SystemVersion; }
    // 0x1020 to 0x102F, and 0x1030 to 0x103F.
    static bool isJaguar(int version = SystemVersion) { return version >= 0x1020 && version <= 0x102F; }
    static bool isPanther(int version = SystemVersion) { return version >= 0x1030 && version <= 0x103F; }
    // Text shadows need a system newer than 0x102F.
    static bool drawsTextShadows(int version = SystemVersion) { return version > 0x102F; }

    // The process's resident memory in kilobytes, from /proc/self/statm; 0
    // when it cannot be read.
    static long residentSetSize();
    // The resident size in kilobytes that a statm line gives with pages of
    // `pageSize` bytes (its second field); 0 for a line without one.
    static long residentKilobytes(const QByteArray& statm, long pageSize);

    // Runs the program (in `workingFolder` when not empty) with an empty
    // standard input, and returns everything it wrote to its standard
    // output; `status` gets its exit status, or -1 when it did not start or
    // crashed.
    static QByteArray runCommand(const QString& program, const QStringList& arguments,
                                 const QString& workingFolder = {}, int* status = nullptr);

    // Starts this program's executable again without arguments and quits
    // the running one; false, and nothing quits, when it cannot start.
    static bool restartApplication();
};

} // namespace quillet
