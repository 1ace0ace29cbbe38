#pragma once

#include <QApplication>
#include <memory>

namespace karvex::app {

/// The window toolkit, of which a process has one. Without a display, ends the process with status 1 and a
/// sentence on standard error that says what to use instead; the toolkit itself would abort. On the main
/// thread. Both arguments must outlive it.
std::unique_ptr<QApplication> startToolkit(int& count, char** arguments);

}  // namespace karvex::app
