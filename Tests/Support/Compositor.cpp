#include "Tests/Support/Compositor.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

namespace quillmere::support {

namespace {

std::vector<std::string> command(bool drawsShadows) {
    std::vector<std::string> arguments{"picom", "--backend", "xrender", "--config", "/dev/null"};
    if (drawsShadows) arguments.emplace_back("--shadow");
    return arguments;
}

}  // namespace

Compositor::Compositor(const std::filesystem::path& folder, const Environment& environment, XConnection& connection,
                       bool drawsShadows)
    : process_({
          .arguments = command(drawsShadows),
          .environment = environment,
          .output = folder / "compositor.log",
          .inheritedDescriptors = {},
          .prepare = {},
      }) {
    const auto composites = [&] { return connection.isSelectionOwned("_NET_WM_CM_S0"); };
    if (!waitUntil(composites)) throw SupportError("the compositor does not start: " + process_.output());
}

}  // namespace quillmere::support
