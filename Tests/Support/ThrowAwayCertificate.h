#pragma once

#include <QSslConfiguration>

namespace quillmere::support {

/// A certificate for 127.0.0.1 that no one trusts, and its key, both made for
/// this object alone.
class ThrowAwayCertificate {
public:
    ThrowAwayCertificate();

    /// What a server that shows it needs.
    const QSslConfiguration& serverConfiguration() const { return configuration_; }
    QSslCertificate certificate() const { return configuration_.localCertificate(); }

private:
    QSslConfiguration configuration_;
};

/// Makes this process trust a certificate for as long as the object lives.
class TrustedCertificate {
public:
    explicit TrustedCertificate(const ThrowAwayCertificate& certificate);
    ~TrustedCertificate();
    TrustedCertificate(const TrustedCertificate&) = delete;
    TrustedCertificate& operator=(const TrustedCertificate&) = delete;

private:
    QSslConfiguration before_;
};

}  // namespace quillmere::support
