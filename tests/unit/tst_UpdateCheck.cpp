#include "api/UpdateCheck.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;

class TestUpdateCheck : public QObject
{
    Q_OBJECT

private slots:
    void isNewerVersion_data();
    void isNewerVersion();
    void decode_data();
    void decode();
};

void TestUpdateCheck::isNewerVersion_data()
{
    QTest::addColumn<QString>("latest");
    QTest::addColumn<QString>("current");
    QTest::addColumn<bool>("newer");

    const QString current = u"4.0.2"_s;
    QTest::newRow("same") << u"4.0.2"_s << current << false;
    QTest::newRow("last-part-older") << u"4.0.1"_s << current << false;
    QTest::newRow("last-part-newer") << u"4.0.3"_s << current << true;
    QTest::newRow("by-number-not-by-text") << u"4.0.10"_s << current << true;
    QTest::newRow("middle-part-newer") << u"4.1"_s << current << true;
    QTest::newRow("first-part-newer") << u"5"_s << current << true;
    QTest::newRow("first-part-older-rest-newer") << u"3.9.9"_s << current << false;
    QTest::newRow("middle-part-older-last-newer") << u"4.-1.9"_s << current << false;
    QTest::newRow("fourth-part-newer") << u"4.0.2.1"_s << current << true;
    QTest::newRow("fourth-part-zero") << u"4.0.2.0"_s << current << false;
    QTest::newRow("shorter-equal-so-far") << u"4.0"_s << current << false;
    QTest::newRow("shorter-than-zeros") << u"4"_s << u"4.0.0"_s << false;
    QTest::newRow("current-shorter") << u"4.0.0.1"_s << u"4"_s << true;
    QTest::newRow("suffix-counts-as-zero") << u"4.0.2-beta"_s << current << false;
    QTest::newRow("suffix-before-newer-part") << u"4.0.2b.9"_s << current << false;
    QTest::newRow("text-part") << u"4.rc1.3"_s << current << true;
    QTest::newRow("empty-part-counts-as-zero") << u"4..3"_s << current << true;
    QTest::newRow("empty-middle-part-same") << u"4..2"_s << current << false;
    QTest::newRow("trailing-dot") << u"4.0.2."_s << current << false;
    QTest::newRow("leading-dot") << u".4.0.3"_s << current << false;
    QTest::newRow("empty") << QString() << current << false;
    QTest::newRow("only-text") << u"latest"_s << current << false;
    QTest::newRow("highest-32-bit") << u"4.0.2147483647"_s << current << true;
    QTest::newRow("past-32-bit-counts-as-zero") << u"4.0.2147483648"_s << current << false;
    QTest::newRow("far-past-32-bit") << u"99999999999999999999"_s << current << false;
    QTest::newRow("negative-older") << u"-5"_s << current << false;
    QTest::newRow("negative-part-of-current") << u"4.0"_s << u"4.0.-1"_s << true;
    QTest::newRow("leading-zeros") << u"4.00.02"_s << current << false;
    QTest::newRow("hex-counts-as-zero") << u"0x5"_s << current << false;
}

void TestUpdateCheck::isNewerVersion()
{
    QFETCH(QString, latest);
    QFETCH(QString, current);
    QTEST(::isNewerVersion(latest, current), "newer");
}

void TestUpdateCheck::decode_data()
{
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("link");

    const auto answer = [](const QJsonValue &version, const QJsonValue &link) {
        return QJsonObject{{u"latest_version"_s, version}, {u"download_url"_s, link}};
    };
    const QString link = u"https://downloads.example/kvt 5.zip"_s;
    const QString noVersion = u"Update check: the server did not report a version."_s;
    const QString newest = u"You are running the latest version (4.0.2)."_s;
    const QString none;

    QTest::newRow("empty-answer") << QJsonObject() << noVersion << 0 << none;
    QTest::newRow("version-empty") << answer(QString(), link) << noVersion << 0 << none;
    QTest::newRow("version-null") << answer(QJsonValue::Null, link) << noVersion << 0 << none;
    QTest::newRow("version-boolean") << answer(true, link) << noVersion << 0 << none;
    QTest::newRow("version-array") << answer(QJsonArray{5}, link) << noVersion << 0 << none;
    QTest::newRow("version-same") << answer(u"4.0.2"_s, link) << newest << 1 << none;
    QTest::newRow("version-older") << answer(u"4.0.1"_s, link) << newest << 1 << none;
    QTest::newRow("version-beta") << answer(u"4.0.2-beta"_s, link) << newest << 1 << none;
    QTest::newRow("version-fraction-reads-as-0") << answer(5.5, link) << newest << 1 << none;
    QTest::newRow("newer") << answer(u"4.1"_s, link) << u"Version 4.1 is available. Opening the download..."_s
                           << 1 << link;
    QTest::newRow("newer-number") << answer(5, link) << u"Version 5 is available. Opening the download..."_s
                                  << 1 << link;
    QTest::newRow("newer-no-link") << QJsonObject{{u"latest_version"_s, u"5.0"_s}}
                                   << u"Update 5.0 is available but no download link was provided."_s << 0
                                   << none;
    QTest::newRow("newer-link-empty")
        << answer(u"5.0"_s, QString()) << u"Update 5.0 is available but no download link was provided."_s << 0
        << none;
    QTest::newRow("newer-link-wrong-type")
        << answer(u"5.0"_s, QJsonObject()) << u"Update 5.0 is available but no download link was provided."_s
        << 0 << none;
    for (const char *other :
         {"file:///etc/passwd", "smb://host/share", "data:text/html,x", "javascript:alert(1)",
          "ftp://downloads.example/", "--version", "-e", "/usr/bin/xterm", "~/.bashrc",
          "downloads.example/kvt.zip", "//downloads.example/kvt.zip", "https:", "https://",
          "https:///kvt.zip", "http:/kvt.zip", "kvt:https://downloads.example/", " "}) {
        QTest::addRow("newer-link <%s>", other)
            << answer(u"5.0"_s, QString::fromLatin1(other))
            << u"Update 5.0 is available but no download link was provided."_s << 0 << none;
    }
    for (const char *web : {"http://downloads.example/", "HTTPS://downloads.example/kvt.zip",
                            "https://downloads.example:8443/a b?c=d#e", "https://user@downloads.example/"}) {
        QTest::addRow("newer-link <%s>", web)
            << answer(u"5.0"_s, QString::fromLatin1(web))
            << u"Version 5.0 is available. Opening the download..."_s << 1 << QString::fromLatin1(web);
    }
    QTest::newRow("newer-with-placeholder-in-text")
        << answer(u"9.%1.%2"_s, link) << u"Version 9.%1.%2 is available. Opening the download..."_s << 1
        << link;
}

void TestUpdateCheck::decode()
{
    QFETCH(QJsonObject, answer);
    const UpdateOutcome outcome = decodeUpdateAnswer(answer, u"4.0.2"_s);
    QTEST(outcome.status, "status");
    QTEST(outcome.level, "level");
    QTEST(outcome.link, "link");
}

KVTEDITOR_TEST_MAIN(TestUpdateCheck)
#include "tst_UpdateCheck.moc"
