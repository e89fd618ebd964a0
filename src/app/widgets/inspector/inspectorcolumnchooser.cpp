#include "app/widgets/inspector/inspectorcolumnchooser.h"

#include "app/models/inspectorcolumnlayout.h"
#include "app/models/inspectorcolumns.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

InspectorColumnChooser::InspectorColumnChooser(InspectorColumnLayout& layout, QWidget* parent)
    : QDialog(parent), m_layout(layout) {
    setObjectName(QStringLiteral("inspectorColumnChooser"));
    setWindowTitle(tr("Inspector Columns"));
    auto* grid = new QGridLayout;
    const std::vector<InspectorColumns::Column>& columns = InspectorColumns::all();
    const int rows = (int(columns.size()) + 1) / 2;
    for (int i = 0; i < int(columns.size()); ++i) {
        auto* box = new QCheckBox(columns[size_t(i)].title, this);
        box->setObjectName(QStringLiteral("column_") + columns[size_t(i)].identifier);
        grid->addWidget(box, i % rows, i / rows);
        connect(box, &QCheckBox::clicked, this,
                [this, i](bool checked) { Q_EMIT columnToggled(i, checked); });
        m_boxes.append(box);
    }
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* done = buttons->addButton(tr("Done"), QDialogButtonBox::AcceptRole);
    done->setObjectName(QStringLiteral("columnChooserDone"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* outer = new QVBoxLayout(this);
    outer->addLayout(grid);
    outer->addWidget(buttons);
    updateBoxes();
}

void InspectorColumnChooser::updateBoxes() {
    for (int i = 0; i < m_boxes.size(); ++i)
        m_boxes[i]->setChecked(m_layout.isShown(i));
}

} // namespace quillet
