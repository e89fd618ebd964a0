#include "app/models/inplacealerttext.h"

#include "inplace/jpegtranrunner.h"

namespace quillet {

QString InplaceAlertText::title(InplaceAlert alert) {
    switch (alert) {
    case InplaceAlert::NonJpegFiles:
        return tr("Non-JPEG Files");
    }
    return {};
}

QString InplaceAlertText::message(InplaceAlert alert) {
    switch (alert) {
    case InplaceAlert::NonJpegFiles:
        return tr("Lossless JPEG operations can only be performed on JPEG files. Non-JPEG files ignored.");
    }
    return {};
}

QString InplaceAlertText::missingJpegtranTitle() {
    return tr("jpegtran Not Found");
}

QString InplaceAlertText::missingJpegtranMessage() {
    const QString chosen = qEnvironmentVariable(JpegtranRunner::EnvironmentVariable);
    if (!chosen.isEmpty())
        return tr("Lossless JPEG rotation needs the jpegtran tool, but %1 names '%2', which is not a "
                  "program that can run. Files left untouched.")
            .arg(QLatin1String(JpegtranRunner::EnvironmentVariable), chosen);
    return tr("Lossless JPEG rotation needs the jpegtran tool, which is not installed. Please install the "
              "package libjpeg-turbo-progs, then drop the files again. Files left untouched.");
}

} // namespace quillet
