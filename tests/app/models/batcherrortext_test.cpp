#include "app/models/batcherrortext.h"

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct Wording {
    BatchError error;
    const char* title;
    const char* message;
};

void PrintTo(const Wording& w, std::ostream* os) {
    *os << w.title << " for " << w.error.folder.toStdString();
}

class BatchErrorTextTest : public testing::TestWithParam<Wording> {};

// The sheet shown after a batch: the folder goes in as it is, even when its
// name holds what looks like a placeholder.
TEST_P(BatchErrorTextTest, SheetTitleAndMessage) {
    EXPECT_EQ(BatchErrorText::title(GetParam().error), QString::fromUtf8(GetParam().title));
    EXPECT_EQ(BatchErrorText::message(GetParam().error), QString::fromUtf8(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Codes, BatchErrorTextTest,
    testing::Values(
        Wording{{BatchError::Code::FolderNotCreated, QStringLiteral("/home/me/Out/trip")},
                "Error Creating Folder",
                "Unable to create folder '/home/me/Out/trip'. Please try creating it manually in the file "
                "manager."},
        Wording{{BatchError::Code::WriteFailed, QStringLiteral("/media/card/100% %1 done")},
                "Write Error",
                "Unable to write in folder '/media/card/100% %1 done'. Please check permission."},
        Wording{{BatchError::Code::WriteFailed, QStringLiteral("/tmp/été")},
                "Write Error",
                "Unable to write in folder '/tmp/été'. Please check permission."}));

} // namespace
