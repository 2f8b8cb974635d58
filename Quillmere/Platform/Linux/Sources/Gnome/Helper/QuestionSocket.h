#pragma once

#include <functional>
#include <string>

namespace quillmere::gnomehelper {

/// The helper's end of its line to the program.
class QuestionSocket {
public:
    /// Answers one question, without its number.
    using Answer = std::function<std::string(const std::string& question)>;

    /// `socket` is one of packets and must outlive this.
    QuestionSocket(int socket, Answer answer);

    /// Answers questions, one after the other, until the program has gone.
    void run();

private:
    bool answerNext();

    int socket_;
    Answer answer_;
};

}  // namespace quillmere::gnomehelper
