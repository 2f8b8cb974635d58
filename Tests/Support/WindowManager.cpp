#include "Tests/Support/WindowManager.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

namespace quillmere::support {

WindowManager::WindowManager(const std::filesystem::path& folder, const Environment& environment,
                             XConnection& connection)
    : process_({
          .arguments = {"openbox", "--sm-disable"},
          .environment = environment,
          .output = folder / "windowmanager.log",
          .inheritedDescriptors = {},
          .prepare = {},
      }) {
    const auto manages = [&] { return connection.number(connection.root(), "_NET_SUPPORTING_WM_CHECK").has_value(); };
    if (!waitUntil(manages)) throw SupportError("the window manager does not start: " + process_.output());
}

}  // namespace quillmere::support
