#include "app/widgets/settings/renamepanel.h"

#include "app/widgets/views/kvstepper.h"
#include "naming/renamer.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace quillet {

namespace {

QLineEdit* textField(const QString& name, const QString& accessible) {
    auto* field = new QLineEdit;
    field->setObjectName(name);
    field->setAccessibleName(accessible);
    return field;
}

KVStepper* stepper(const QString& name, int minimum, int maximum) {
    auto* box = new KVStepper;
    box->setObjectName(name);
    box->setRange(minimum, maximum);
    return box;
}

} // namespace

int RenamePanel::heightForType(int type) {
    static const int heights[] = {140, 301, 248, 471};
    return type >= 0 && type < 4 ? heights[type] : heights[0];
}

RenamePanel::RenamePanel(Renamer& renamer, QWidget* parent) : QDialog(parent), m_renamer(renamer) {
    setObjectName(QStringLiteral("renamePanel"));
    setWindowTitle(tr("Output File Names"));

    m_type = new QComboBox;
    m_type->setObjectName(QStringLiteral("renameType"));
    m_type->setAccessibleName(tr("Naming scheme"));
    m_type->addItem(tr("Same as input filename"), Renamer::KeepName);
    m_type->addItem(tr("Sequence number"), Renamer::Sequence);
    m_type->addItem(tr("Input filename with prefix and suffix"), Renamer::PrefixSuffix);
    m_type->addItem(tr("Date taken"), Renamer::Date);

    auto* keepPage = new QLabel(tr("Output files keep the names of their pictures."));
    keepPage->setWordWrap(true);

    auto* numberPage = new QWidget;
    auto* numberForm = new QFormLayout(numberPage);
    numberForm->addRow(tr("Prefix:"), m_numPrefix = textField(QStringLiteral("numberPrefix"), tr("Prefix")));
    numberForm->addRow(tr("Suffix:"), m_numSuffix = textField(QStringLiteral("numberSuffix"), tr("Suffix")));
    numberForm->addRow(tr("Digits:"), m_digits = stepper(QStringLiteral("numberDigits"), 0, 20));
    numberForm->addRow(tr("Start from:"), m_start = stepper(QStringLiteral("numberStart"), 0, 999999999));
    m_digits->setToolTip(tr("The least number of digits; shorter numbers get leading zeros."));

    auto* namePage = new QWidget;
    auto* nameForm = new QFormLayout(namePage);
    nameForm->addRow(tr("Prefix:"), m_origPrefix = textField(QStringLiteral("namePrefix"), tr("Prefix")));
    nameForm->addRow(tr("Suffix:"), m_origSuffix = textField(QStringLiteral("nameSuffix"), tr("Suffix")));

    auto* datePage = new QWidget;
    auto* dateForm = new QFormLayout(datePage);
    dateForm->addRow(tr("Prefix:"), m_datePrefix = textField(QStringLiteral("datePrefix"), tr("Prefix")));
    dateForm->addRow(tr("Suffix:"), m_dateSuffix = textField(QStringLiteral("dateSuffix"), tr("Suffix")));
    m_dateFormat = new QComboBox;
    m_dateFormat->setObjectName(QStringLiteral("dateFormat"));
    m_dateFormat->setAccessibleName(tr("Date format"));
    const QStringList titles = m_renamer.dateFormatTitles();
    for (int tag = 0; tag < titles.size(); ++tag)
        m_dateFormat->addItem(titles.at(tag), tag);
    dateForm->addRow(tr("Date format:"), m_dateFormat);
    m_conflictFormat = new QComboBox;
    m_conflictFormat->setObjectName(QStringLiteral("conflictFormat"));
    m_conflictFormat->setAccessibleName(tr("Separator before the number of a repeated date"));
    m_conflictFormat->addItem(tr("Dash: 2005-1"), 0);
    m_conflictFormat->addItem(tr("Underscore: 2005_1"), 1);
    m_conflictFormat->addItem(tr("Space: 2005 1"), 2);
    dateForm->addRow(tr("Same date twice:"), m_conflictFormat);
    m_fallback = new QButtonGroup(this);
    auto* fileDate = new QRadioButton(tr("Use the file's date"));
    auto* keepName = new QRadioButton(tr("Keep the input filename"));
    fileDate->setObjectName(QStringLiteral("fallbackFileDate"));
    keepName->setObjectName(QStringLiteral("fallbackKeepName"));
    m_fallback->addButton(fileDate, 0);
    m_fallback->addButton(keepName, 1);
    auto* fallbackBox = new QVBoxLayout;
    fallbackBox->addWidget(fileDate);
    fallbackBox->addWidget(keepName);
    dateForm->addRow(tr("Without a capture date:"), fallbackBox);

    m_pages = new QStackedWidget;
    for (QWidget* page : {static_cast<QWidget*>(keepPage), numberPage, namePage, datePage})
        m_pages->addWidget(page);

    m_examples = new QLabel;
    m_examples->setObjectName(QStringLiteral("renameExamples"));
    m_examples->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    auto* typeRow = new QFormLayout;
    typeRow->addRow(tr("Name output files:"), m_type);
    layout->addLayout(typeRow);
    layout->addWidget(m_pages);
    layout->addStretch(1);
    layout->addWidget(m_examples);
    layout->addWidget(buttons);

    connect(m_type, &QComboBox::activated, this,
            [this](int index) { selectType(m_type->itemData(index).toInt()); });
    for (QLineEdit* field : {m_numPrefix, m_numSuffix})
        connect(field, &QLineEdit::textEdited, this, [this] { edited(Renamer::Sequence); });
    for (QLineEdit* field : {m_origPrefix, m_origSuffix})
        connect(field, &QLineEdit::textEdited, this, [this] { edited(Renamer::PrefixSuffix); });
    for (QLineEdit* field : {m_datePrefix, m_dateSuffix})
        connect(field, &QLineEdit::textEdited, this, [this] { edited(Renamer::Date); });
    connect(m_digits, &QSpinBox::valueChanged, this, [this](int value) {
        if (m_loading)
            return;
        m_renamer.setDigits(value);
        edited(Renamer::Sequence);
    });
    connect(m_start, &QSpinBox::valueChanged, this, [this](int value) {
        if (m_loading)
            return;
        m_renamer.setStartFrom(value);
        edited(Renamer::Sequence);
    });
    connect(m_dateFormat, &QComboBox::activated, this, [this](int index) {
        m_renamer.setDateFormatTag(m_dateFormat->itemData(index).toInt());
        updateExamples();
    });
    connect(m_conflictFormat, &QComboBox::activated, this, [this](int index) {
        m_renamer.setConflictFormatTag(m_conflictFormat->itemData(index).toInt());
        updateExamples();
    });
    // The examples use the sample date, so the fallback never changes them.
    connect(m_fallback, &QButtonGroup::idClicked, this,
            [this](int tag) { m_renamer.setDateFallbackTag(tag); });

    // Every page starts from the scheme as it stands, so choosing a page that
    // was never saved keeps the scheme's texts and numbers instead of
    // blanking them; later, only the saved scheme's page is put back.
    m_loading = true;
    for (QLineEdit* prefix : {m_numPrefix, m_origPrefix, m_datePrefix})
        prefix->setText(m_renamer.prefix());
    for (QLineEdit* suffix : {m_numSuffix, m_origSuffix, m_dateSuffix})
        suffix->setText(m_renamer.suffix());
    m_digits->setValue(m_renamer.digits());
    m_start->setValue(m_renamer.startFrom());
    m_loading = false;
    showScheme();
}

void RenamePanel::showScheme() {
    m_loading = true;
    const int type = m_renamer.renameType();
    // The date's menus and fallback are the scheme's whatever its type.
    m_dateFormat->setCurrentIndex(m_dateFormat->findData(m_renamer.dateFormatTag()));
    m_conflictFormat->setCurrentIndex(m_conflictFormat->findData(m_renamer.conflictFormatTag()));
    if (QAbstractButton* button = m_fallback->button(m_renamer.dateFallbackTag() == 0 ? 0 : 1))
        button->setChecked(true);
    switch (type) {
    case Renamer::Sequence:
        m_numPrefix->setText(m_renamer.prefix());
        m_numSuffix->setText(m_renamer.suffix());
        m_digits->setValue(m_renamer.digits());
        m_start->setValue(m_renamer.startFrom());
        break;
    case Renamer::PrefixSuffix:
        m_origPrefix->setText(m_renamer.prefix());
        m_origSuffix->setText(m_renamer.suffix());
        break;
    case Renamer::Date:
        m_datePrefix->setText(m_renamer.prefix());
        m_dateSuffix->setText(m_renamer.suffix());
        break;
    default:
        break;
    }
    m_loading = false;
    m_type->setCurrentIndex(m_type->findData(type));
    m_pages->setCurrentIndex(type >= 0 && type < 4 ? type : 0);
    updateExamples();
    fitHeight();
}

void RenamePanel::selectType(int type) {
    readPage(type);
    m_type->setCurrentIndex(m_type->findData(type));
    m_pages->setCurrentIndex(type >= 0 && type < 4 ? type : 0);
    QLineEdit* first[] = {nullptr, m_numPrefix, m_origPrefix, m_datePrefix};
    if (type > 0 && type < 4)
        first[type]->setFocus();
    fitHeight();
    updateExamples();
}

void RenamePanel::readPage(int type) {
    m_renamer.setType(type);
    switch (type) {
    case Renamer::Sequence:
        m_renamer.setPrefix(m_numPrefix->text());
        m_renamer.setSuffix(m_numSuffix->text());
        m_renamer.setDigits(m_digits->value());
        m_renamer.setStartFrom(m_start->value());
        break;
    case Renamer::PrefixSuffix:
        m_renamer.setPrefix(m_origPrefix->text());
        m_renamer.setSuffix(m_origSuffix->text());
        break;
    case Renamer::Date:
        m_renamer.setPrefix(m_datePrefix->text());
        m_renamer.setSuffix(m_dateSuffix->text());
        break;
    default:
        break;
    }
}

void RenamePanel::edited(int type) {
    if (m_loading)
        return;
    readPage(type);
    m_type->setCurrentIndex(m_type->findData(type));
    m_pages->setCurrentIndex(type);
    updateExamples();
}

QString RenamePanel::examplesText() const {
    return m_examples->text();
}

void RenamePanel::updateExamples() {
    m_examples->setText(m_renamer.examplesLine());
}

void RenamePanel::fitHeight() {
    // The top edge stays put: a resize in Qt keeps the window's position.
    const int type = m_type->currentData().toInt();
    // Only the page on show counts toward the panel's size.
    for (int i = 0; i < m_pages->count(); ++i)
        m_pages->widget(i)->setSizePolicy(
            i == m_pages->currentIndex() ? QSizePolicy::Preferred : QSizePolicy::Ignored,
            i == m_pages->currentIndex() ? QSizePolicy::Preferred : QSizePolicy::Ignored);
    m_pages->adjustSize();
    layout()->activate();
    resize(qMax(width(), 420), qMax(heightForType(type), minimumSizeHint().height()));
}

} // namespace quillet
