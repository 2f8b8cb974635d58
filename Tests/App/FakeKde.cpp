#include "Tests/App/FakeKde.h"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <utility>

namespace quillmere {

namespace {

const QString busName = QStringLiteral("org.kde.keyboard");

}  // namespace

// By these names the bus library finds them.
QDBusArgument& operator<<(QDBusArgument& argument, const FakeKde::Layout& layout) {
    argument.beginStructure();
    argument << layout.layout << layout.label << layout.name;
    argument.endStructure();
    return argument;
}
void operator>>(const QDBusArgument& argument, FakeKde::Layout& layout) {
    argument.beginStructure();
    argument >> layout.layout >> layout.label >> layout.name;
    argument.endStructure();
}

FakeKde::FakeKde(const std::string& busAddress)
    : bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), QStringLiteral("played KDE"))) {
    qDBusRegisterMetaType<Layout>();
    qDBusRegisterMetaType<QList<Layout>>();
    moveToThread(&thread_);
    thread_.start();
    bus_.registerVirtualObject(QStringLiteral("/Layouts"), this);
}

FakeKde::~FakeKde() {
    bus_.unregisterObject(QStringLiteral("/Layouts"));
    QDBusConnection::disconnectFromBus(bus_.name());
    thread_.quit();
    thread_.wait();
}

void FakeKde::appear() {
    bus_.registerService(busName);
}

void FakeKde::vanish() {
    bus_.unregisterService(busName);
}

void FakeKde::setLayouts(const std::vector<Layout>& layouts) {
    const std::lock_guard lock(mutex_);
    layouts_ = layouts;
}

void FakeKde::setListAnswer(const QVariant& answer) {
    const std::lock_guard lock(mutex_);
    listAnswer_ = answer;
}

void FakeKde::replaceAtSwitch(const std::vector<Layout>& layouts) {
    const std::lock_guard lock(mutex_);
    layoutsAtSwitch_ = layouts;
}

void FakeKde::setWraps(bool wraps) {
    const std::lock_guard lock(mutex_);
    wraps_ = wraps;
}

void FakeKde::setIgnores(bool ignores) {
    const std::lock_guard lock(mutex_);
    ignores_ = ignores;
}

void FakeKde::standStill() {
    const std::lock_guard lock(mutex_);
    standsStill_ = true;
}

void FakeKde::goOn() {
    const std::lock_guard lock(mutex_);
    standsStill_ = false;
    for (const QDBusMessage& message : std::exchange(unanswered_, {}))
        answer(message);
}

unsigned int FakeKde::current() const {
    const std::lock_guard lock(mutex_);
    return current_;
}

void FakeKde::setCurrent(unsigned int index) {
    const std::lock_guard lock(mutex_);
    current_ = index;
}

bool FakeKde::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
    const std::lock_guard lock(mutex_);
    ++callCount_;
    if (standsStill_)
        unanswered_.push_back(message);
    else
        answer(message);
    return true;
}

QString FakeKde::introspect(const QString& /*path*/) const {
    return {};
}

void FakeKde::answer(const QDBusMessage& message) {
    QDBusMessage reply = message.createReply();
    if (message.member() == QLatin1String("getLayout")) reply << current_;
    if (message.member() == QLatin1String("setLayout")) reply << switchTo(message.arguments().value(0).toUInt());
    if (message.member() == QLatin1String("getLayoutsList"))
        reply << (listAnswer_.isValid() ? listAnswer_
                                        : QVariant::fromValue(QList<Layout>(layouts_.begin(), layouts_.end())));
    bus_.send(reply);
}

bool FakeKde::switchTo(unsigned int index) {
    if (!layoutsAtSwitch_.empty()) layouts_ = std::exchange(layoutsAtSwitch_, {});
    if (ignores_) return true;
    const auto count = static_cast<unsigned int>(layouts_.size());
    if (index >= count && !wraps_) return false;
    current_ = index % count;
    return true;
}

}  // namespace quillmere
