#include <gmock/gmock.h>

#include <QApplication>

/// The tests run without a display, unless the caller chooses a platform (tests/ui/qt/CMakeLists.txt does so
/// once).
int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  return RUN_ALL_TESTS();
}
