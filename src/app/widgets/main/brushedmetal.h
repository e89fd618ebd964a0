#pragma once

class QWidget;

namespace quillet {

// Gives a window the textured look of brushed metal: a light grey background
// with fine horizontal grain, behind its own widgets.
void applyBrushedMetal(QWidget* window);

} // namespace quillet
