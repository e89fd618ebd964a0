#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace quillet {

class PreviewModel;
class ScaledImageView;

// The preview beside the settings: the original and the picture as the
// batch will write it, split by a handle the user drags, the figures of the
// output under them and buttons to step through the queue. It borrows the
// model and is active only while shown.
class PreviewPane : public QWidget {
    Q_OBJECT
  public:
    explicit PreviewPane(PreviewModel& model, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void showQueue();
    void showResult();
    void showEstimate();

    PreviewModel& m_model;
    ScaledImageView* m_original;
    ScaledImageView* m_output;
    QPushButton* m_previous;
    QPushButton* m_next;
    QLabel* m_position;
    QLabel* m_pixels;
    QLabel* m_bytes;
    QLabel* m_quality;
    QLabel* m_name;
    QLabel* m_estimate;
};

} // namespace quillet
