#pragma once

#include "app/models/fileoptions.h"

#include <QGroupBox>

class QCheckBox;

namespace quillet {

// The file options as five check boxes (object names "fileOption<tag>").
class FileOptionsBox : public QGroupBox {
    Q_OBJECT
  public:
    FileOptionsBox(UserDefaults& defaults, QWidget* parent = nullptr);
    // Sets the boxes from the store.
    void refresh();

  private:
    FileOptions m_options;
    QCheckBox* m_boxes[FileOptions::Count];
};

} // namespace quillet
