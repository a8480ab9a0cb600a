#include "DevService.h"
#include "EndpointTest.h"
#include "Faults.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// By the names that the stand-in takes, with arguments where needed.
QStringList faultsToMeet()
{
    // These hold a request for as long as it lasts, or take seconds to make; other tests send them.
    const QStringList elsewhere{u"hold"_s, u"endless-body"_s, u"deflate-bomb"_s, u"body-64m"_s,
                                u"json-64m"_s};
    QStringList faults;
    for (const FaultKind &kind : faultKinds()) {
        const QString name = kind.name;
        if (name == "status"_L1)
            faults += {u"status:404"_s, u"status:500:html"_s, u"status:503:empty"_s};
        else if (!elsewhere.contains(name))
            faults.append(name);
    }
    return faults;
}

/// The POSTs after the first `before` requests, as path, size and body: a resent one is a duplicate.
QStringList postsSince(const DevService &service, int before)
{
    QStringList posts;
    for (const ServiceRequest &request : service.requests().sliced(before)) {
        if (request.method == "POST")
            posts.append(request.path + u' ' + QString::number(request.bodySize) + u' '
                         + QString::fromLatin1(request.body));
    }
    return posts;
}

} // namespace

/// The operations to try with every fault of the stand-in, except those that hold a request or send very
/// large bodies.
class TestEndpointStandIn : public EndpointTest
{
    Q_OBJECT

private slots:
    void namedFaults_data();
    void namedFaults();
    void slowAnswerIsWhole_data();
    void slowAnswerIsWhole();

private:
    void meet(const EndpointOperation &operation, const QString &fault, DevService &service);
};

void TestEndpointStandIn::namedFaults_data()
{
    addOperationRows();
}

void TestEndpointStandIn::namedFaults()
{
    QFETCH(int, operation);
    const EndpointOperation &tried = operationAt(operation);
    DevService service;
    QVERIFY(service.start());
    const QStringList faults = faultsToMeet();
    QVERIFY(faults.size() > 15);
    for (const QString &fault : faults) {
        meet(tried, fault, service);
        if (QTest::currentTestFailed()) {
            qWarning("%s", qPrintable(fault));
            return;
        }
    }
    service.stop();
    QVERIFY(m_fixture->fill());
    checkNextGoodOne(tried);
}

void TestEndpointStandIn::meet(const EndpointOperation &operation, const QString &fault, DevService &service)
{
    service.clearFaults();
    QVERIFY(service.setFault(u"*"_s, fault));
    m_fixture->setApiBase(service.apiBase());
    const int before = service.requestCount();
    QVERIFY(before < 900);
    begin(operation);
    QVERIFY(m_fixture->settle());
    checkLoosely(operation);
    // A redirected POST is followed by a GET, and a good answer may cause another request: only POSTs count.
    QStringList posts = postsSince(service, before);
    if (operation.decoding == Decoding::Get) {
        QCOMPARE(posts, QStringList());
        QVERIFY(service.requestCount() > before);
        return;
    }
    QVERIFY(posts.size() >= 1 && posts.size() <= operation.goodRequests);
    QCOMPARE(posts.removeDuplicates(), 0);
}

void TestEndpointStandIn::slowAnswerIsWhole_data()
{
    addOperationRows();
}

void TestEndpointStandIn::slowAnswerIsWhole()
{
    QFETCH(int, operation);
    const EndpointOperation &tried = operationAt(operation);
    DevService service;
    QVERIFY(service.start());
    service.setAnswer(QLatin1StringView(tried.path), {200, "text/plain", tried.goodAnswer, {}});
    QVERIFY(service.setFault(QLatin1StringView(tried.path), u"slow"_s, 1));
    m_fixture->setApiBase(service.apiBase());
    begin(tried);
    QVERIFY(m_fixture->settle());
    QCOMPARE(m_fixture->state().status(), QString::fromUtf8(tried.goodStatus));
    service.stop();
    QCOMPARE(service.requestCount(), tried.goodRequests);
}

KVTEDITOR_TEST_MAIN(TestEndpointStandIn)
#include "tst_EndpointStandIn.moc"
