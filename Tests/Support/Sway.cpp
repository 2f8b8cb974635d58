#include "Tests/Support/Sway.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include <X11/Xlib.h>
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace quillmere::support {

namespace {

// The user that owns nothing.
constexpr uid_t nobody = 65534;

void becomeNobody() {
    if (geteuid() != 0) return;
    if (setgroups(0, nullptr) != 0 || setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)
        _exit(127);
    // Was dropped with the rights.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

void giveAway(const std::filesystem::path& path) {
    if (geteuid() == 0 && chown(path.c_str(), nobody, nobody) != 0)
        throw SupportError("cannot give " + path.string() + " away", errno);
}

/// Xwayland serves only the user whose desktop it is.
void openXwaylandToRoot(const std::string& display) {
    if (geteuid() != 0 || display.empty()) return;
    const bool isNobody = seteuid(nobody) == 0;
    Display* connection = XOpenDisplay(display.c_str());
    if (!isNobody || seteuid(0) != 0 || connection == nullptr) throw SupportError("no Xwayland at " + display);
    std::string type = "localuser";
    std::string value = "root";
    XServerInterpretedAddress user{.typelength = static_cast<int>(type.size()),
                                   .valuelength = static_cast<int>(value.size()),
                                   .type = type.data(),
                                   .value = value.data()};
    XHostAddress address{
        .family = FamilyServerInterpreted, .length = sizeof user, .address = reinterpret_cast<char*>(&user)};
    XAddHost(connection, &address);
    XCloseDisplay(connection);
}

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
        giveAway(path);
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
        .prepare = becomeNobody,
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
    openXwaylandToRoot(xDisplay_);
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

std::vector<int> Sway::layoutsInUse(const std::string& identifier) const {
    std::vector<int> result;
    const QJsonArray all = inputs();
    for (const auto& entry : all) {
        const QJsonObject input = entry.toObject();
        if (input["identifier"].toString().toStdString() == identifier)
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
