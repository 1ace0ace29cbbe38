#include "app/rig/WindowCommand.hpp"

#include <QtGlobal>
#include <memory>

#include "app/Toolkit.hpp"
#include "app/WindowProgram.hpp"
#include "app/rig/RigCore.hpp"

namespace karvex::app {

bool hasDisplay() {
  return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

RunRecord runInWindow(const CommonOptions& common, const ApplicationOptions& options,
                      const RunRecorder::EndListener& endListener) {
  // The toolkit keeps both for as long as it runs, and would take options of its own out of the real ones.
  static int count = 1;
  static char name[] = "karvex-rig";
  static char* arguments[] = {name, nullptr};
  const auto toolkit = startToolkit(count, arguments);
  RunRecord record;
  WindowProgram([&] { return std::make_unique<RigCore>(common, options, record, endListener); }).run();
  return record;
}

}  // namespace karvex::app
