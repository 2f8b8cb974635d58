#include "Tests/Support/ThrowAwayCertificate.h"

#include "Tests/Support/SupportError.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>

namespace quillmere::support {

namespace {

QByteArray read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw SupportError("no file " + path.toStdString());
    return file.readAll();
}

void generate(const QString& certificate, const QString& key) {
    const QStringList arguments = {"req",
                                   "-x509",
                                   "-newkey",
                                   "ec",
                                   "-pkeyopt",
                                   "ec_paramgen_curve:prime256v1",
                                   "-nodes",
                                   "-days",
                                   "2",
                                   "-subj",
                                   "/CN=127.0.0.1",
                                   "-addext",
                                   "subjectAltName=IP:127.0.0.1",
                                   "-out",
                                   certificate,
                                   "-keyout",
                                   key};
    QProcess openssl;
    openssl.start("openssl", arguments);
    if (!openssl.waitForFinished() || openssl.exitCode() != 0) {
        throw SupportError("openssl made no certificate: " + openssl.readAllStandardError().toStdString());
    }
}

}  // namespace

ThrowAwayCertificate::ThrowAwayCertificate() : configuration_(QSslConfiguration::defaultConfiguration()) {
    const QTemporaryDir folder;
    const QString certificate = folder.filePath("certificate.pem");
    const QString key = folder.filePath("key.pem");
    generate(certificate, key);
    configuration_.setLocalCertificate(QSslCertificate(read(certificate)));
    configuration_.setPrivateKey(QSslKey(read(key), QSsl::Ec));
    configuration_.setPeerVerifyMode(QSslSocket::VerifyNone);
}

TrustedCertificate::TrustedCertificate(const ThrowAwayCertificate& certificate)
    : before_(QSslConfiguration::defaultConfiguration()) {
    QSslConfiguration trusting = before_;
    trusting.addCaCertificate(certificate.certificate());
    QSslConfiguration::setDefaultConfiguration(trusting);
}

TrustedCertificate::~TrustedCertificate() {
    QSslConfiguration::setDefaultConfiguration(before_);
}

}  // namespace quillmere::support
