#include "app/models/renamingmodel.h"

#include <QSettings>

namespace quillet {

RenamingModel::RenamingModel(QSettings& store, QObject* parent)
    : QObject(parent), m_store(store), m_renamer(store) {}

void RenamingModel::beginEdit() {
    m_renamer.readFromDefaults(m_store);
}

void RenamingModel::endEdit(bool accepted) {
    m_renamer.acceptChanges(accepted, m_store);
    Q_EMIT summaryChanged(summary());
}

void RenamingModel::reload() {
    m_renamer.readFromDefaults(m_store);
}

QString RenamingModel::summary() const {
    return m_renamer.examples() ? m_renamer.examplesLine() : tr("Same as input filename");
}

} // namespace quillet
