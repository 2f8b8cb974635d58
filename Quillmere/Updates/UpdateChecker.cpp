#include "Quillmere/Updates/UpdateChecker.h"

#include "Quillmere/Updates/FeedSession.h"
#include "QuillmereCore/UpdateCheck.h"
#include "QuillmereCore/Whitespace.h"

#include <utility>

namespace quillmere {

namespace {

UpdateResult unreadable() {
    return UpdateResult::failed("The update feed could not be read.");
}

UpdateResult evaluate(const std::string& body, const UpdateChecker& checker, const std::string& language) {
    const auto outcome = UpdateCheck::evaluate(body, checker.feedURL, checker.current, language);
    if (!outcome) {
        if (outcome.error() != UpdateFeedError::noDownload) return unreadable();
        return UpdateResult::failed("The update feed names no download.");
    }
    if (outcome->isUpToDate()) return UpdateResult::upToDate();
    return UpdateResult::available(*outcome->offer());
}

UpdateResult decide(const FeedAnswer& answer, const UpdateChecker& checker, const std::string& language) {
    constexpr int okay = 200;
    if (answer.transportError) return UpdateResult::failed(*answer.transportError);
    if (answer.status != okay)
        return UpdateResult::failed("The server answered " + std::to_string(answer.status) + ".");
    if (!answer.body) return unreadable();
    return evaluate(*answer.body, checker, language);
}

}  // namespace

std::optional<UpdateChecker> UpdateChecker::configured(const Bundle& bundle) {
    const std::string address = bundle.string("QuillmereUpdateFeed").value_or("");
    const auto feedURL = URL::parse(trimmed(address, Whitespace::blanks));
    if (!feedURL) return std::nullopt;
    auto current = AppVersion::parse(bundle.string("CFBundleShortVersionString").value_or("0"));
    if (!current) current = AppVersion::parse("0");
    return UpdateChecker{*feedURL, *current};
}

void UpdateChecker::check(FeedSession& session, const std::vector<std::string>& preferredLanguages,
                          std::function<void(UpdateResult)> completion) const {
    const QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(feedURL.text()));
    const auto handle = [checker = *this, language = UpdateCheck::language(preferredLanguages),
                         completion = std::move(completion)](const FeedAnswer& answer) -> std::function<void()> {
        return [completion, result = decide(answer, checker, language)] { completion(result); };
    };
    session.fetch(url, "Quillmere/" + current.description(), handle);
}

}  // namespace quillmere
