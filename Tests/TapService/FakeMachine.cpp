#include "Tests/TapService/FakeMachine.h"

#include "TapService/Clock.h"

#include <sstream>

namespace quillmere::tap {

Time FakeMachine::now() {
    return monotonicNow();
}

void FakeMachine::type(DeviceId device, const std::string& words) {
    std::istringstream line(words);
    for (std::string word; line >> word;) {
        fakes.now = now();
        fakes.move(device, TapBench::code(word.substr(1)), word.front() == '+' ? 1 : 0);
        std::deque<InputEvent>& unread = keyboard(device).unread;
        while (!unread.empty()) {
            const InputEvent event = unread.front();
            unread.pop_front();
            sink_->deviceEvent(device, event);
        }
    }
}

}  // namespace quillmere::tap
