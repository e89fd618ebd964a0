#pragma once

#include "testsupport.h"

#include <QFile>
#include <QString>
#include <QStringList>

namespace quillet::guitest {

// A stand-in for jpegtran, for QUILLET_JPEGTRAN: a script that notes each
// call's arguments as one line, fails on a file that does not begin like a
// JPEG, and otherwise writes the picture out unturned.
class StandInJpegtran {
  public:
    explicit StandInJpegtran(const QString& folder)
        : m_program(folder + QStringLiteral("/jpegtran")), m_log(folder + QStringLiteral("/calls.txt")) {
        const QString script =
            QStringLiteral("#!/bin/sh\n"
                           "echo \"$*\" >> '%1'\n"
                           "out=; prev=\n"
                           "for arg; do [ \"$prev\" = -outfile ] && out=$arg; prev=$arg; done\n"
                           "[ \"$(head -c 2 \"$arg\" | od -An -tx1 | tr -d ' ')\" = ffd8 ] "
                           "|| exit 1\n"
                           "cat \"$arg\" > \"$out\"\n")
                .arg(m_log);
        testsupport::writeFile(m_program, script.toLocal8Bit());
        QFile::setPermissions(m_program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QString program() const { return m_program; }
    // Each call's arguments, space-separated.
    QStringList calls() const {
        return QString::fromLocal8Bit(testsupport::readFile(m_log))
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

  private:
    QString m_program;
    QString m_log;
};

} // namespace quillet::guitest
