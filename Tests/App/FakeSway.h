#pragma once

#include <QByteArray>

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
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
    bool serve(int client);
    std::string answer(std::uint32_t type, const std::string& payload);
    void send(int client, const std::string& bytes);

    int listener_;
    int wake_[2];
    std::mutex mutex_;
    std::condition_variable hungUp_;
    QByteArray inputs_ = "[]";
    std::string wireAnswer_;
    std::string events_;
    std::size_t pieces_ = 1;
    bool hangsUp_ = false;
    std::vector<std::string> commands_;
    std::size_t connectionCount_ = 0;
    std::thread thread_;
};

}  // namespace quillmere
