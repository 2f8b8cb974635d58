#include "Tests/Support/Sway.h"

#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

namespace quillmere::support {

namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The node of the tree of windows, or one below it, that fits.
std::optional<QJsonObject> findNode(const QJsonObject& node, const std::function<bool(const QJsonObject&)>& fits) {
    if (fits(node)) return node;
    for (const char* children : {"nodes", "floating_nodes"}) {
        const QJsonArray all = node[children].toArray();
        for (const auto& child : all)
            if (const auto found = findNode(child.toObject(), fits)) return found;
    }
    return std::nullopt;
}

std::string titleOf(const QJsonObject& node) {
    return node["name"].toString().toStdString();
}

std::string valueIn(const std::string& lines, const std::string& name) {
    const std::string start = '\n' + name + '=';
    const std::size_t found = ('\n' + lines).find(start);
    if (found == std::string::npos) return {};
    const std::size_t value = found + start.size() - 1;
    return lines.substr(value, lines.find('\n', value) - value);
}

}  // namespace

Sway::Sway(const std::filesystem::path& folder, const Environment& environment, const Options& options)
    : folder_(folder / "sway"), environment_(environment) {
    std::filesystem::create_directories(folder_ / "runtime");
    std::filesystem::permissions(folder_ / "runtime", std::filesystem::perms::owner_all);
    for (const auto& path : {folder, folder_, folder_ / "runtime"})
        giveToOrdinaryUser(path);
    environment_["HOME"] = folder_;
    environment_["XDG_RUNTIME_DIR"] = folder_ / "runtime";
    environment_["SWAYSOCK"] = socket();
    environment_["WLR_RENDERER"] = "pixman";
    environment_["WLR_BACKENDS"] = options.display.empty() ? "headless" : "x11";
    environment_["WLR_LIBINPUT_NO_DEVICES"] = "1";
    environment_["DISPLAY"] = options.display;
    writeConfiguration(options);
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = {"sway", "--config", folder_ / "config"},
        .environment = environment_,
        .output = folder_ / "log",
        .inheritedDescriptors = {},
        .prepare = becomeOrdinaryUser,
    });
    takeEnvironment();
}

std::string Sway::socket() const {
    return folder_ / "socket";
}

void Sway::writeConfiguration(const Options& options) const {
    std::ofstream(folder_ / "config") << "xwayland " << (options.hasXwayland ? "force" : "disable") << '\n'
                                      << "input type:keyboard {\n  xkb_layout \"" << options.layouts
                                      << "\"\n  xkb_variant \"" << options.variants << "\"\n}\n"
                                      << "output X11-1 resolution 1280x800\n"
                                      << options.configuration << '\n'
                                      << "exec 'env > $HOME/started.part && mv $HOME/started.part $HOME/started'\n";
}

/// The compositor picks its displays itself, and tells those that it starts.
void Sway::takeEnvironment() {
    const std::filesystem::path started = folder_ / "started";
    waitUntil([&] { return std::filesystem::exists(started) || !process_->isRunning(); });
    const std::string variables = contents(started);
    if (variables.empty()) throw SupportError("sway does not start: " + process_->output());
    waylandDisplay_ = folder_ / "runtime" / valueIn(variables, "WAYLAND_DISPLAY");
    xDisplay_ = valueIn(variables, "DISPLAY");
    if (xDisplay_ == environment_["DISPLAY"]) xDisplay_.clear();
    openXwaylandToTests(xDisplay_);
}

int Sway::message(const std::vector<std::string>& arguments, const std::filesystem::path& reply) const {
    std::vector<std::string> all{"swaymsg", "--raw"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::filesystem::remove(reply);
    return ChildProcess::run({
        .arguments = all,
        .environment = environment_,
        .output = reply,
        .inheritedDescriptors = {},
        .prepare = {},
    });
}

bool Sway::command(const std::string& text) const {
    return message({"--", text}, folder_ / "reply") == 0;
}

QJsonArray Sway::inputs() const {
    message({"-t", "get_inputs"}, folder_ / "reply");
    return QJsonDocument::fromJson(QByteArray::fromStdString(contents(folder_ / "reply"))).array();
}

std::vector<int> Sway::layoutsInUse(const KeyboardNames& names) const {
    std::vector<int> result;
    const QJsonArray all = inputs();
    for (const auto& entry : all) {
        const QJsonObject input = entry.toObject();
        if (std::ranges::find(names, input["identifier"].toString().toStdString()) != names.end())
            result.push_back(input["xkb_active_layout_index"].toInt(-1));
    }
    return result;
}

QJsonObject Sway::tree() const {
    message({"-t", "get_tree"}, folder_ / "reply");
    return QJsonDocument::fromJson(QByteArray::fromStdString(contents(folder_ / "reply"))).object();
}

bool Sway::showsTitle(const std::string& title) const {
    return findNode(tree(), [&](const QJsonObject& node) { return titleOf(node) == title; }).has_value();
}

std::string Sway::focusedTitle() const {
    const auto focused = findNode(tree(), [](const QJsonObject& node) { return node["focused"].toBool(); });
    return focused ? titleOf(*focused) : std::string();
}

}  // namespace quillmere::support
