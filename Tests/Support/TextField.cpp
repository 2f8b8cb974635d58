#include "Tests/Support/TextField.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <utility>

namespace quillmere::support {

namespace {

ChildProcess::Options application(const std::filesystem::path& folder, Environment environment,
                                  const std::string& method) {
    environment["QT_IM_MODULE"] = method;
    return {.arguments = {QUILLMERE_TEXT_FIELD},
            .environment = std::move(environment),
            .output = folder / "text-field",
            .inheritedDescriptors = {},
            .prepare = {}};
}

}  // namespace

TextField::TextField(const std::filesystem::path& folder, const Environment& environment, const std::string& method)
    : process_(application(folder, environment, method)) {
    const bool isReady = waitUntil([this] { return process_.output().ends_with('\n') || !process_.isRunning(); });
    if (!isReady || !process_.isRunning()) throw SupportError("no text field: " + process_.output());
}

std::string TextField::text() const {
    const std::string output = process_.output();
    const std::size_t end = output.find_last_of('\n');
    const std::size_t before = output.find_last_of('\n', end - 1);
    const std::size_t start = end == 0 || before == std::string::npos ? 0 : before + 1;
    return output.substr(start, end - start);
}

}  // namespace quillmere::support
