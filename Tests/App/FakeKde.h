#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QThread>
#include <QVariant>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace quillmere {

/// The part of KDE that has the layouts, as a test tells it to be, in a thread
/// of its own: for the answers that the real one does not give.
class FakeKde final : public QDBusVirtualObject {
public:
    struct Layout {
        QString layout;
        QString label;
        QString name;
    };

    /// On the bus at this address, without the name.
    explicit FakeKde(const std::string& busAddress);
    ~FakeKde() override;

    /// Takes the name org.kde.keyboard, and gives it back.
    void appear();
    void vanish();

    void setLayouts(const std::vector<Layout>& layouts);
    /// What it answers to getLayoutsList instead, whatever it is.
    void setListAnswer(const QVariant& answer);
    /// The layouts that are there from the next setLayout on.
    void replaceAtSwitch(const std::vector<Layout>& layouts);
    /// Whether setLayout takes any number, as the daemon of X11 does.
    void setWraps(bool wraps);
    /// Whether it reports success and does nothing.
    void setIgnores(bool ignores);
    /// Leaves what comes unanswered, and answers all of it later.
    void standStill();
    void goOn();

    unsigned int current() const;
    void setCurrent(unsigned int index);
    /// How many calls have come so far.
    int callCount() const { return callCount_; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;

private:
    void answer(const QDBusMessage& message);
    bool switchTo(unsigned int index);

    QThread thread_;
    QDBusConnection bus_;
    mutable std::mutex mutex_;
    std::vector<Layout> layouts_;
    std::vector<Layout> layoutsAtSwitch_;
    QVariant listAnswer_;
    unsigned int current_ = 0;
    bool wraps_ = false;
    bool ignores_ = false;
    bool standsStill_ = false;
    std::vector<QDBusMessage> unanswered_;
    std::atomic<int> callCount_ = 0;
};

}  // namespace quillmere

Q_DECLARE_METATYPE(quillmere::FakeKde::Layout)
