#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/PairSwitch.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/QuestionSocket.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/ListJournalFile.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

using namespace quillmere::gnomehelper;

std::string answer(PairSwitch& sources, const std::string& question) {
    if (question == askState) return std::to_string(sources.current()) + '\n' + textOf(sources.sources());
    const std::string choice = std::string(askSelect) + '\n';
    if (!question.starts_with(choice)) return refused;
    const auto wanted = listIn(question.substr(choice.size()));
    return wanted.size() == 1 && sources.select(wanted.front()) ? done : refused;
}

}  // namespace

// Started by the program, with a socket to it in place of the standard input.
int main() {
    // The end of a session must not come between the user's list and its
    // return: this process ends when the program has, which is soon after.
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        std::signal(number, SIG_IGN);
    const auto settings = InputSourceSettings::open();
    if (settings == nullptr) return EXIT_FAILURE;
    ListJournal journal(listJournalFile());
    PairSwitch sources(*settings, journal);
    QuestionSocket(STDIN_FILENO, [&](const std::string& question) { return answer(sources, question); }).run();
    return EXIT_SUCCESS;
}
