#include "Tests/Support/FakeHyprland.h"

#include "Tests/Support/SupportError.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <regex>
#include <sstream>

namespace quillmere::support {

namespace {

int listenAt(const std::filesystem::path& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    constexpr int backlog = 16;
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || listen(descriptor, backlog) != 0)
        throw SupportError("the stand-in for Hyprland does not start at " + path.string());
    return descriptor;
}

void sendAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::vector<std::string> split(const std::string& text, char mark) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, mark);)
        parts.push_back(part);
    return parts;
}

std::string joined(const std::vector<FakeHyprland::Layout>& layouts, std::string FakeHyprland::Layout::* part) {
    std::string text;
    for (const FakeHyprland::Layout& layout : layouts)
        text += (&layout == layouts.data() ? "" : ",") + layout.*part;
    const bool isEmpty = text.find_first_not_of(',') == std::string::npos;
    return isEmpty ? std::string() : text;
}

/// Both ways of writing modifiers have these words.
unsigned int modifiersIn(const std::string& text) {
    unsigned int mask = 0;
    for (const auto& [word, bit] :
         std::array<std::pair<const char*, unsigned int>, 4>{{{"SHIFT", 1}, {"CTRL", 4}, {"ALT", 8}, {"SUPER", 64}}})
        if (text.find(word) != std::string::npos) mask |= bit;
    return mask;
}

unsigned int keyCodeIn(const std::string& text) {
    const std::string mark = "code:";
    const std::size_t found = text.find(mark);
    if (found == std::string::npos) return 0;
    return static_cast<unsigned int>(std::strtoul(text.c_str() + found + mark.size(), nullptr, 10));
}

std::string bindEntry(unsigned int modifiers, const std::string& submap, const std::string& key, unsigned int code,
                      const std::string& description, const std::string& dispatcher, const std::string& argument) {
    return "\n{\n    \"locked\": false,\n    \"mouse\": false,\n    \"release\": false,\n    \"repeat\": false,\n"
           "    \"non_consuming\": false,\n    \"has_description\": "
           + std::string(description.empty() ? "false" : "true") + ",\n    \"modmask\": " + std::to_string(modifiers)
           + ",\n    \"submap\": \"" + submap + "\",\n    \"key\": \"" + key
           + "\",\n    \"keycode\": " + std::to_string(code) + ",\n    \"catch_all\": false,\n    \"description\": \""
           + description + "\",\n    \"dispatcher\": \"" + dispatcher + "\",\n    \"arg\": \"" + argument + "\"\n},";
}

}  // namespace

FakeHyprland::FakeHyprland(const std::filesystem::path& folder, Version version) : folder_(folder), version_(version) {
    std::filesystem::create_directories(folder);
    requestListener_ = listenAt(folder / ".socket.sock");
    eventListener_ = listenAt(folder / ".socket2.sock");
    if (pipe2(wake_, O_CLOEXEC) != 0) throw SupportError("no pipe");
    plugIn(button, usualLayouts());
    plugIn(board, usualLayouts());
    thread_ = std::thread([this] { run(); });
}

FakeHyprland::~FakeHyprland() {
    close(wake_[1]);
    thread_.join();
    close(wake_[0]);
    for (const int descriptor : {requestListener_, eventListener_})
        close(descriptor);
    for (const auto& [client, request] : heldBack_)
        close(client);
    for (const int listener : listeners_)
        close(listener);
    std::filesystem::remove_all(folder_);
}

std::vector<FakeHyprland::Layout> FakeHyprland::usualLayouts() {
    return {{"us", "", "English (US)"}, {"ua", "", "Ukrainian"}, {"de", "dvorak", "German (Dvorak)"}};
}

void FakeHyprland::run() {
    std::array<pollfd, 3> all{{{.fd = wake_[0], .events = POLLIN, .revents = 0},
                               {.fd = requestListener_, .events = POLLIN, .revents = 0},
                               {.fd = eventListener_, .events = POLLIN, .revents = 0}}};
    while (poll(all.data(), all.size(), -1) > 0 && all[0].revents == 0) {
        if (all[1].revents != 0) acceptRequest();
        if (all[2].revents != 0) acceptListener();
    }
}

void FakeHyprland::acceptListener() {
    const std::lock_guard lock(mutex_);
    listeners_.push_back(accept4(eventListener_, nullptr, nullptr, SOCK_CLOEXEC));
}

void FakeHyprland::acceptRequest() {
    const int client = accept4(requestListener_, nullptr, nullptr, SOCK_CLOEXEC);
    std::array<char, 4096> bytes;
    // A request is what comes with the first reading.
    const ssize_t count = recv(client, bytes.data(), bytes.size(), 0);
    const std::string request(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    const std::lock_guard lock(mutex_);
    if (isSilent_)
        heldBack_.emplace_back(client, request);
    else
        serve(client, request);
}

void FakeHyprland::serve(int client, const std::string& request) {
    requests_.push_back(request);
    const auto other =
        std::ranges::find_if(answers_, [&](const auto& entry) { return request.starts_with(entry.first); });
    sendAll(client, other == answers_.end() ? answer(request) : other->second);
    close(client);
}

std::string FakeHyprland::answer(const std::string& request) {
    if (request == "j/devices") return devices();
    if (request == "j/binds") return binds();
    if (request == "j/version") {
        const std::string number = version_ == Version::lua ? "0.57.0" : "0.49.0";
        return "{\n    \"branch\": \"\",\n    \"tag\": \"v" + number + "\",\n    \"version\": \"" + number + "\"\n}";
    }
    const std::vector<std::string> words = split(request, ' ');
    if (words.size() == 3 && words[0] == "switchxkblayout") return switchLayout(words[1], words[2]);
    if (request.starts_with("keyword ") && version_ == Version::hyprlang) return keyword(request.substr(8));
    if (request.starts_with("eval ") && version_ == Version::lua) return eval(request.substr(5));
    return "unknown request";
}

std::string FakeHyprland::devices() const {
    std::string result = "{\n\"mice\": [\n],\n\"keyboards\": [\n";
    for (const Keyboard& keyboard : keyboards_) {
        result += "    {\n        \"address\": \"0x" + std::to_string(keyboard.address) + "\",\n        \"name\": \""
                  + keyboard.name + "\",\n        \"rules\": \"\",\n        \"model\": \"\",\n        \"layout\": \""
                  + joined(keyboard.layouts, &Layout::layout) + "\",\n        \"variant\": \""
                  + joined(keyboard.layouts, &Layout::variant) + "\",\n        \"options\": \"\",\n";
        if (version_ == Version::lua)
            result += "        \"active_layout_index\": " + std::to_string(keyboard.active) + ",\n";
        result += "        \"active_keymap\": \"" + keyboard.layouts[keyboard.active].name
                  + "\",\n        \"capsLock\": false,\n        \"numLock\": false,\n        \"main\": "
                  + (&keyboard == &keyboards_.back() ? "true" : "false") + "\n    },";
    }
    if (result.ends_with(',')) result.pop_back();
    return result + "\n],\n\"tablets\": [\n],\n\"touch\": [\n],\n\"switches\": [\n]\n}\n";
}

std::string FakeHyprland::binds() const {
    std::string result = "[";
    for (const OwnBind& bind : ownBinds_)
        result += bindEntry(bind.modifiers, bind.submap, bind.key, bind.keyCode, "", "exec", "menu");
    for (std::size_t i = 0; i < binds_.size(); ++i) {
        const Bind& bind = binds_[i];
        const bool isLua = version_ == Version::lua;
        result += bindEntry(bind.modifiers, "", "", bind.keyCode, bind.description, isLua ? "__lua" : "event",
                            isLua ? std::to_string(i) : bind.event);
    }
    if (result.ends_with(',')) result.pop_back();
    return result + "]";
}

std::string FakeHyprland::switchLayout(const std::string& keyboard, const std::string& index) {
    const std::size_t layout = std::strtoul(index.c_str(), nullptr, 10);
    const bool isAll = knowsAll_ && keyboard == "all";
    std::string result;
    bool isFound = isAll;
    for (Keyboard& each : keyboards_) {
        if (!isAll && each.name != keyboard) continue;
        isFound = true;
        if (layout < each.layouts.size())
            put(each, layout);
        else
            result += "layout idx out of range of " + std::to_string(each.layouts.size()) + '\n';
    }
    if (!isFound) return "device not found";
    return result.empty() ? "ok" : result;
}

/// "bind CTRL ALT,code:65,event,text", "unbind CTRL ALT,code:65".
std::string FakeHyprland::keyword(const std::string& text) {
    const std::size_t space = text.find(' ');
    const std::vector<std::string> parts = split(text.substr(space + 1), ',');
    const bool isBind = text.starts_with("bind ") && parts.size() == 4 && parts[2] == "event";
    if (!isBind && !(text.starts_with("unbind ") && parts.size() == 2)) return "Invalid input";
    const unsigned int modifiers = modifiersIn(parts[0]);
    const unsigned int code = keyCodeIn(parts[1]);
    if (isBind)
        binds_.push_back({.keys = text, .modifiers = modifiers, .keyCode = code, .event = parts[3], .description = {}});
    else
        std::erase_if(binds_, [&](const Bind& bind) { return bind.modifiers == modifiers && bind.keyCode == code; });
    return "ok";
}

/// Of Lua it knows what the program says.
std::string FakeHyprland::eval(const std::string& code) {
    static const std::regex clearing(
        R"(for _, bind in pairs\(quillmere or \{\}\) do bind:remove\(\) end quillmere = \{\})");
    static const std::regex binding(
        R"re(quillmere = quillmere or \{\} quillmere\["([^"]+)"\] = hl\.bind\("([^"]+)", hl\.dsp\.event\("([^"]+)"\), \{ description = "([^"]+)" \}\))re");
    static const std::regex unbinding(R"re(quillmere\["([^"]+)"\]:remove\(\) quillmere\["([^"]+)"\] = nil)re");
    std::smatch parts;
    if (std::regex_match(code, clearing)) {
        if (std::exchange(hasTable_, true)) binds_.clear();
        return "ok";
    }
    if (std::regex_match(code, parts, binding)) {
        const std::string keys = parts[2];
        hasTable_ = true;
        binds_.push_back({keys, modifiersIn(keys), keyCodeIn(keys), parts[3], parts[4]});
        return "ok";
    }
    if (!std::regex_match(code, parts, unbinding)) return "error: [string \"eval\"]:1: syntax error";
    if (!hasTable_) return "error: [string \"eval\"]:1: attempt to index a nil value (global 'quillmere')";
    const std::string keys = parts[1];
    if (std::erase_if(binds_, [&](const Bind& bind) { return bind.keys == keys; }) == 0)
        return "error: [string \"eval\"]:1: attempt to index a nil value (field '?')";
    return "ok";
}

void FakeHyprland::put(Keyboard& keyboard, std::size_t layout) {
    keyboard.active = layout;
    tell("activelayout>>" + keyboard.name + "," + keyboard.layouts[layout].name + "\n");
}

/// Who does not read misses what comes meanwhile, as with the real one.
void FakeHyprland::tell(const std::string& bytes) {
    for (const int listener : listeners_)
        send(listener, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void FakeHyprland::plugIn(const std::string& name, const std::vector<Layout>& layouts) {
    const std::lock_guard lock(mutex_);
    keyboards_.push_back({.name = name, .address = ++addresses_, .layouts = layouts});
    put(keyboards_.back(), 0);
}

void FakeHyprland::unplug(const std::string& name) {
    const std::lock_guard lock(mutex_);
    std::erase_if(keyboards_, [&](const Keyboard& keyboard) { return keyboard.name == name; });
}

void FakeHyprland::switchKeyboard(const std::string& name, std::size_t layout) {
    const std::lock_guard lock(mutex_);
    put(*std::ranges::find(keyboards_, name, &Keyboard::name), layout);
}

std::vector<std::size_t> FakeHyprland::layoutsInUse() {
    const std::lock_guard lock(mutex_);
    std::vector<std::size_t> result;
    for (const Keyboard& keyboard : keyboards_)
        result.push_back(keyboard.active);
    return result;
}

void FakeHyprland::setOwnBinds(const std::vector<OwnBind>& binds) {
    const std::lock_guard lock(mutex_);
    ownBinds_ = binds;
}

/// All binds of a combination are in effect together.
bool FakeHyprland::press(unsigned int modifiers, unsigned int keyCode) {
    const std::lock_guard lock(mutex_);
    bool isBound = std::ranges::any_of(ownBinds_, [&](const OwnBind& bind) {
        return bind.modifiers == modifiers && bind.keyCode == keyCode && bind.submap.empty();
    });
    for (const Bind& bind : binds_) {
        if (bind.modifiers != modifiers || bind.keyCode != keyCode) continue;
        isBound = true;
        tell("custom>>" + bind.event + "\n");
    }
    return isBound;
}

void FakeHyprland::reload() {
    reloadUntold();
    announce("configreloaded>>\n");
}

void FakeHyprland::reloadUntold() {
    const std::lock_guard lock(mutex_);
    binds_.clear();
    hasTable_ = false;
}

std::size_t FakeHyprland::bindCount() {
    const std::lock_guard lock(mutex_);
    return binds_.size();
}

void FakeHyprland::forgetAll() {
    const std::lock_guard lock(mutex_);
    knowsAll_ = false;
}

void FakeHyprland::setSilent(bool isSilent) {
    const std::lock_guard lock(mutex_);
    isSilent_ = isSilent;
    if (isSilent) return;
    for (const auto& [client, request] : std::exchange(heldBack_, {}))
        serve(client, request);
}

void FakeHyprland::setAnswer(const std::string& request, const std::string& bytes) {
    const std::lock_guard lock(mutex_);
    answers_[request] = bytes;
}

void FakeHyprland::clearAnswers() {
    const std::lock_guard lock(mutex_);
    answers_.clear();
}

void FakeHyprland::announce(const std::string& bytes) {
    const std::lock_guard lock(mutex_);
    tell(bytes);
}

void FakeHyprland::hangUp() {
    const std::lock_guard lock(mutex_);
    for (const int listener : std::exchange(listeners_, {}))
        close(listener);
}

std::vector<std::string> FakeHyprland::requests() {
    const std::lock_guard lock(mutex_);
    return requests_;
}

}  // namespace quillmere::support
