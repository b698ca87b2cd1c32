#pragma once
// The panel tests' picture of a widget, saved under the build folder.
#include <QWidget>
#include <string>

namespace kelvo::app::testing {

// Saves a picture of the widget and fails when it is all one colour or when a text shown
// lacks the room it needs.
void screenshot(QWidget& widget, const std::string& name);

}  // namespace kelvo::app::testing
