#pragma once

#include <QByteArray>

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quillmere {

/// A compositor that says what a test tells it to, in a thread of its own: for
/// the answers that the real one does not give.
class FakeSway {
public:
    /// Listens at this path.
    explicit FakeSway(const std::filesystem::path& path);
    ~FakeSway();
    FakeSway(const FakeSway&) = delete;
    FakeSway& operator=(const FakeSway&) = delete;

    /// What it answers to get_inputs.
    void setInputs(const QByteArray& inputs);
    /// The answer to get_inputs as it goes over the wire, header and all,
    /// until it is empty again.
    void setWireAnswer(const std::string& bytes);
    /// What it answers to get_version, get_config and get_binding_state; the
    /// version 1.7, an empty configuration and the mode "default" until then.
    void setVersion(int major, int minor);
    void setConfiguration(const std::string& text);
    void setMode(const std::string& name);
    /// It keeps its answers to itself until it is silent no more.
    void setSilent(bool isSilent);
    /// Sent at once, to whoever is connected.
    void announce(const QByteArray& event);
    /// Sent in front of the next answer to get_inputs.
    void addEvent(const QByteArray& event);
    /// In how many pieces an answer is sent.
    void setPieces(std::size_t pieces);
    /// Closes the connections that there are, and waits until it is done.
    void hangUp();

    /// The commands that came so far.
    std::vector<std::string> commands();
    /// How many connections there were so far.
    std::size_t connectionCount();

    /// A message as it goes over the wire.
    static std::string message(std::uint32_t type, const std::string& payload);

private:
    void run();
    void wake(char reason);
    bool serve(int client);
    /// Whether the answer is kept while it is silent.
    bool holdBack(int client, const std::string& bytes);
    std::string answer(std::uint32_t type, const std::string& payload);
    void send(int client, const std::string& bytes);

    int listener_;
    int wake_[2];
    std::mutex mutex_;
    std::condition_variable hungUp_;
    QByteArray inputs_ = "[]";
    QByteArray version_ = R"({"human_readable": "1.7", "major": 1, "minor": 7})";
    std::string configuration_;
    std::string mode_ = "default";
    std::string wireAnswer_;
    std::string events_;
    std::string announcements_;
    bool isSilent_ = false;
    std::vector<std::pair<int, std::string>> heldBack_;  ///< for whom, and the answer
    std::size_t pieces_ = 1;
    bool hangsUp_ = false;
    std::vector<std::string> commands_;
    std::size_t connectionCount_ = 0;
    std::thread thread_;
};

}  // namespace quillmere
