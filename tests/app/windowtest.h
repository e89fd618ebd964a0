#pragma once

#include "app/guitest.h"
#include "app/widgets/main/mainwindow.h"

#include <memory>

namespace quillet::guitest {

// A GuiTest with the main window shown on its models.
class WindowTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        openWindow();
    }
    void TearDown() override {
        window.reset();
        GuiTest::TearDown();
    }
    void openWindow() {
        window = std::make_unique<MainWindow>(*controller, *models, sheets);
        window->show();
    }

    std::unique_ptr<MainWindow> window;
};

} // namespace quillet::guitest
