#include "app/widgets/main/fileoptionsbox.h"

#include <QCheckBox>
#include <QVBoxLayout>

namespace quillet {

FileOptionsBox::FileOptionsBox(UserDefaults& defaults, QWidget* parent)
    : QGroupBox(tr("Output files"), parent), m_options(defaults) {
    setObjectName(QStringLiteral("fileOptionsBox"));
    auto* layout = new QVBoxLayout(this);
    for (int tag = 0; tag < FileOptions::Count; ++tag) {
        m_boxes[tag] = new QCheckBox(FileOptions::title(tag), this);
        m_boxes[tag]->setObjectName(QStringLiteral("fileOption%1").arg(tag));
        layout->addWidget(m_boxes[tag]);
        connect(m_boxes[tag], &QCheckBox::toggled, this, [this, tag](bool on) {
            m_options.set(tag, on);
            refresh();
        });
    }
    refresh();
}

void FileOptionsBox::refresh() {
    for (int tag = 0; tag < FileOptions::Count; ++tag) {
        const QSignalBlocker quiet(m_boxes[tag]);
        m_boxes[tag]->setEnabled(m_options.enabled(tag));
        m_boxes[tag]->setChecked(m_options.shown(tag));
    }
}

} // namespace quillet
