#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace quillmere {

/// Takes the place of what opens addresses of one scheme, for as long as it
/// lives, and keeps them.
class OpenedAddresses : public QObject {
    Q_OBJECT
public:
    explicit OpenedAddresses(const QString& scheme) : scheme_(scheme) {
        QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~OpenedAddresses() override { QDesktopServices::unsetUrlHandler(scheme_); }

    const QList<QUrl>& addresses() const { return addresses_; }

public slots:
    void open(const QUrl& address) { addresses_.append(address); }

private:
    QString scheme_;
    QList<QUrl> addresses_;
};

}  // namespace quillmere
