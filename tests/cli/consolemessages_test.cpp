#include "cli/consolemessages.h"

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct Wording {
    BatchError error;
    const char* line;
};

void PrintTo(const Wording& w, std::ostream* os) {
    *os << w.error.folder.toStdString();
}

class ConsoleMessagesTest : public testing::TestWithParam<Wording> {};

// The report's last line after a batch cut short: the window's title and
// text on one line, the folder as it is even when it looks like a placeholder.
TEST_P(ConsoleMessagesTest, BatchErrorLine) {
    EXPECT_EQ(ConsoleMessages::batchError(GetParam().error), QString::fromUtf8(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    Codes, ConsoleMessagesTest,
    testing::Values(
        Wording{{BatchError::Code::FolderNotCreated, QStringLiteral("/home/me/Out/trip")},
                "Error Creating Folder: Unable to create folder '/home/me/Out/trip'. Please try creating it "
                "manually in the file manager."},
        Wording{{BatchError::Code::WriteFailed, QStringLiteral("/media/card/100% %1 done")},
                "Write Error: Unable to write in folder '/media/card/100% %1 done'. Please check "
                "permission."}));

} // namespace
