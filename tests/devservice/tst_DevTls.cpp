#include "DevService.h"
#include "Exchange.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace {

const QString update = u"updates/kvteditornew/update.json"_s;

QString certificate(const QString &name)
{
    return QStringLiteral(KVTEDITOR_CERTIFICATES_DIR) + u'/' + name;
}

DevService::Options withCertificate(const QString &name)
{
    return {.port = 0, .certificate = certificate(name + ".pem"_L1), .key = certificate(name + ".key"_L1)};
}

} // namespace

class TestDevTls : public QObject
{
    Q_OBJECT

private slots:
    void goodCertificateIsAccepted();
    void badCertificatesAreRefusedBeforeAnyByte_data();
    void badCertificatesAreRefusedBeforeAnyByte();
    void plainRequestToTlsPortFails();
    void tlsRequestToPlainPortFails();
    void faultsWorkOverTls();
    void redirectToPlainIsRefused();
    void unusableCertificateIsReported();
};

void TestDevTls::goodCertificateIsAccepted()
{
    DevService service(withCertificate(u"server"_s));
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    QVERIFY(service.apiBase().startsWith("https://127.0.0.1:"_L1));
    const Outcome outcome = get(service.apiBase() + update, certificate(u"ca.pem"_s));
    QCOMPARE(outcome.error, QNetworkReply::NoError);
    QCOMPARE(outcome.status, 200);
    QVERIFY(outcome.json().value("download_url"_L1).toString().startsWith("https://"_L1));
    QCOMPARE(service.requestCount(update), 1);
}

void TestDevTls::badCertificatesAreRefusedBeforeAnyByte_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSslError::SslError>("error");
    QTest::newRow("self-signed") << u"self-signed"_s << QSslError::SelfSignedCertificate;
    QTest::newRow("other-host") << u"other-host"_s << QSslError::HostNameMismatch;
    QTest::newRow("expired") << u"expired"_s << QSslError::CertificateExpired;
    QTest::newRow("unknown-ca") << u"unknown-ca"_s << QSslError::UnableToGetLocalIssuerCertificate;
}

void TestDevTls::badCertificatesAreRefusedBeforeAnyByte()
{
    QFETCH(QString, name);
    QFETCH(QSslError::SslError, error);
    DevService service(withCertificate(name));
    QVERIFY(service.start());
    const Outcome outcome = post(service.apiBase() + "feedback.aspx"_L1, R"({"type":"dev"})",
                                 "application/json", certificate(u"ca.pem"_s));
    QCOMPARE(outcome.error, QNetworkReply::SslHandshakeFailedError);
    QVERIFY(outcome.tlsErrors.contains(error));
    service.stop();
    QVERIFY(service.connectionCount() > 0);
    QCOMPARE(service.requestCount(), 0);
}

void TestDevTls::plainRequestToTlsPortFails()
{
    DevService service(withCertificate(u"server"_s));
    QVERIFY(service.start());
    const QString plain = service.apiBase().replace("https:"_L1, "http:"_L1);
    QVERIFY(get(plain + update).error != QNetworkReply::NoError);
    service.stop();
    QCOMPARE(service.requestCount(), 0);
}

void TestDevTls::tlsRequestToPlainPortFails()
{
    DevService service;
    QVERIFY(service.start());
    const QString tls = service.apiBase().replace("http:"_L1, "https:"_L1);
    QVERIFY(get(tls + update, certificate(u"ca.pem"_s)).error != QNetworkReply::NoError);
    service.stop();
    QCOMPARE(service.requestCount(), 0);
}

void TestDevTls::faultsWorkOverTls()
{
    DevService service(withCertificate(u"server"_s));
    QVERIFY(service.start());
    for (const QString &fault : {u"close"_s, u"reset"_s, u"reset-mid-body"_s, u"short-body"_s}) {
        QVERIFY(service.setFault(update, fault));
        QVERIFY2(get(service.apiBase() + update, certificate(u"ca.pem"_s)).error != QNetworkReply::NoError,
                 qPrintable(fault));
    }
    service.clearFaults();
    QVERIFY(service.setFault(update, u"body-64m"_s, 1));
    QCOMPARE(get(service.apiBase() + update, certificate(u"ca.pem"_s)).body.size(), 64 * 1024 * 1024);
    QCOMPARE(get(service.apiBase() + update, certificate(u"ca.pem"_s)).error, QNetworkReply::NoError);
}

void TestDevTls::redirectToPlainIsRefused()
{
    DevService service(withCertificate(u"server"_s));
    QVERIFY(service.start());
    QVERIFY(service.setFault(update, u"redirect-plain"_s));
    const Outcome outcome = get(service.apiBase() + update, certificate(u"ca.pem"_s));
    QCOMPARE(outcome.error, QNetworkReply::InsecureRedirectError);
    QCOMPARE(service.requestCount(update), 1);
}

void TestDevTls::unusableCertificateIsReported()
{
    DevService missing({.port = 0, .certificate = u"/no/such.pem"_s, .key = u"/no/such.key"_s});
    QString error;
    QVERIFY(!missing.start(&error));
    QVERIFY2(error.contains("/no/such.pem"_L1), qPrintable(error));
    DevService mixed(
        {.port = 0, .certificate = certificate(u"server.pem"_s), .key = certificate(u"expired.key"_s)});
    QVERIFY(!mixed.start());
}

KVTEDITOR_TEST_MAIN(TestDevTls)
#include "tst_DevTls.moc"
