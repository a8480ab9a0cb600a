#include "core/HexInspector.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int large = 2 * 1024 * 1024;

QString textOf(const QVariantList &rows, const QString &name, const QString &column = u"first"_s)
{
    for (const QVariant &row : rows) {
        if (row.toMap().value(u"name"_s) == name)
            return row.toMap().value(column).toString();
    }
    return u"no such row"_s;
}

QString sha256(QByteArrayView bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(bytes);
    return QString::fromLatin1(hash.result().toHex()).toUpper();
}

QByteArray counting(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 251);
    return bytes;
}

} // namespace

class TestHexInspector : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void withoutAModelThereAreRows();
    void doesNothingWhileInactive();
    void values_followTheModel();
    void values_areOfTheOrders();
    void sums_ofAShortSelection();
    void sums_followTheModel();
    void sums_areCountedOnce();
    void sums_areCountedAsideFromOnePieceOn();
    void sums_ofALargeSelection();
    void counting_isGivenUpAndRestarted_data();
    void counting_isGivenUpAndRestarted();
    void counting_letsGoOfTheBytes();
    void counting_endsWithTheSelection();
    void counting_endsWithTheFile();
    void counting_endsWhenInactive();
    void counting_endsWithTheInspector();
    void counting_outlivesTheModel();
    void hexModel_isExchanged();

private:
    QString value(const QString &name) const { return textOf(m_inspector->values(), name); }
    QString sum(const QString &name) const { return textOf(m_inspector->sums(), name); }

    std::unique_ptr<HexModel> m_model;
    std::unique_ptr<HexInspector> m_inspector;
};

void TestHexInspector::init()
{
    m_inspector.reset();
    m_model = std::make_unique<HexModel>();
    m_inspector = std::make_unique<HexInspector>();
    m_inspector->setHexModel(m_model.get());
    m_inspector->setActive(true);
}

void TestHexInspector::withoutAModelThereAreRows()
{
    HexInspector inspector;
    for (const bool active : {false, true}) {
        inspector.setActive(active);
        QCOMPARE(inspector.values().size(), 12);
        QCOMPARE(textOf(inspector.values(), u"Double"_s), QString());
        QCOMPARE(inspector.sums().size(), 6);
        QCOMPARE(textOf(inspector.sums(), u"Length"_s), QString());
        QVERIFY(!inspector.isCounting());
    }
}

void TestHexInspector::doesNothingWhileInactive()
{
    m_inspector->setActive(false);
    const QSignalSpy valuesChanged(m_inspector.get(), &HexInspector::valuesChanged);
    const QSignalSpy sumsChanged(m_inspector.get(), &HexInspector::sumsChanged);
    m_model->setBytes(counting(large));
    m_model->setCursor(5);
    QVERIFY(m_model->select(7, large - 7));
    QVERIFY(m_model->applyPatch(7, "\x55"));
    QCOMPARE(valuesChanged.count() + sumsChanged.count(), 0);
    QCOMPARE(value(u"UInt8"_s), QString());

    m_inspector->setActive(true);
    QCOMPARE(value(u"UInt8"_s), u"85"_s);
    QCOMPARE(sum(u"Length"_s), u"1FFFF9"_s);
    QVERIFY(m_inspector->isCounting());
}

void TestHexInspector::values_followTheModel()
{
    m_model->setBytes("\x01\x02");
    QCOMPARE(value(u"UInt16"_s), u"513"_s);
    m_model->setCursor(1);
    QCOMPARE(value(u"UInt8"_s), u"2"_s);
    QCOMPARE(value(u"UInt16"_s), QString());
    QVERIFY(m_model->applyPatch(1, "A"));
    QCOMPARE(value(u"ASCII"_s), u"A"_s);
    m_model->setBytes("xyz");
    QCOMPARE(value(u"ASCII"_s), u"y"_s);
    m_model->setBytes({});
    QCOMPARE(value(u"ASCII"_s), QString());
}

void TestHexInspector::values_areOfTheOrders()
{
    m_model->setBytes("\x01\x02\x03\x04");
    const QVariantMap expected{{u"name"_s, u"UInt32"_s},
                               {u"first"_s, u"67305985"_s},
                               {u"second"_s, u"16909060"_s},
                               {u"single"_s, false}};
    QCOMPARE(m_inspector->values().at(4).toMap(), expected);
    QVERIFY(m_inspector->values().at(0).toMap().value(u"single"_s).toBool());
}

void TestHexInspector::sums_ofAShortSelection()
{
    m_model->setBytes("..123456789..");
    QVERIFY(m_model->select(2, 9));
    QVERIFY(!m_inspector->isCounting());
    const auto decimal = [this](const QString &name) {
        return textOf(m_inspector->sums(), name, u"second"_s);
    };
    QCOMPARE(sum(u"Length"_s), u"9"_s);
    QCOMPARE(decimal(u"Length"_s), u"9"_s);
    QCOMPARE(sum(u"Sum 8"_s), u"DD"_s);
    QCOMPARE(decimal(u"Sum 8"_s), u"221"_s);
    QCOMPARE(sum(u"Sum 16"_s), u"01DD"_s);
    QCOMPARE(decimal(u"Sum 16"_s), u"477"_s);
    QCOMPARE(sum(u"Sum 32"_s), u"000001DD"_s);
    QCOMPARE(decimal(u"Sum 32"_s), u"477"_s);
    QCOMPARE(sum(u"CRC-32"_s), u"CBF43926"_s);
    QCOMPARE(decimal(u"CRC-32"_s), u"3421780262"_s);
    QCOMPARE(sum(u"SHA-256"_s), u"15E2B0D3C33891EBB0F1EF609EC419420C20E320CE94C65FBC8C3312448EB225"_s);
    QVERIFY(m_inspector->sums().at(5).toMap().value(u"single"_s).toBool());
}

void TestHexInspector::sums_followTheModel()
{
    m_model->setBytes("abc");
    m_model->selectTo(1);
    QCOMPARE(sum(u"Sum 8"_s), u"C3"_s);
    m_model->selectTo(2);
    QCOMPARE(sum(u"Sum 16"_s), u"0126"_s);
    QVERIFY(m_model->applyPatch(2, "\x03"));
    QCOMPARE(sum(u"Sum 8"_s), u"C6"_s);
    m_model->setCursor(2);
    QCOMPARE(sum(u"Length"_s), QString());
    QCOMPARE(sum(u"SHA-256"_s), QString());
    m_model->selectTo(0);
    QCOMPARE(sum(u"Length"_s), u"3"_s);
    m_model->setBytes("abc");
    QCOMPARE(sum(u"Length"_s), QString());
}

void TestHexInspector::sums_areCountedOnce()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    WAIT_VERIFY(!m_inspector->isCounting());
    const QSignalSpy sumsChanged(m_inspector.get(), &HexInspector::sumsChanged);
    m_model->selectTo(m_model->cursor());
    QCOMPARE(sumsChanged.count(), 0);
}

void TestHexInspector::sums_areCountedAsideFromOnePieceOn()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(3, int(ByteSums::pieceSize)));
    QVERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"SHA-256"_s), sha256(QByteArrayView(m_model->bytes()).sliced(3, ByteSums::pieceSize)));
    QVERIFY(m_model->select(3, int(ByteSums::pieceSize) + 1));
    QVERIFY(m_inspector->isCounting());
}

void TestHexInspector::sums_ofALargeSelection()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(1, large - 2));
    QVERIFY(m_inspector->isCounting());
    QCOMPARE(sum(u"Length"_s), u"1FFFFE"_s);
    QCOMPARE(sum(u"Sum 8"_s), QString());
    QCOMPARE(sum(u"SHA-256"_s), QString());
    WAIT_VERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"Length"_s), u"1FFFFE"_s);
    QCOMPARE(sum(u"SHA-256"_s), sha256(QByteArrayView(m_model->bytes()).sliced(1, large - 2)));
}

void TestHexInspector::counting_isGivenUpAndRestarted_data()
{
    QTest::addColumn<std::function<void(HexModel &)>>("change");

    const auto add = [](const char *name, std::function<void(HexModel &)> change) {
        QTest::newRow(name) << change;
    };
    add("patch-inside", [](HexModel &model) { QVERIFY(model.applyPatch(1000, "changed")); });
    add("patch-outside", [](HexModel &model) { QVERIFY(model.applyPatch(0, "c")); });
    add("other-selection", [](HexModel &model) { QVERIFY(model.select(7, large - 7)); });
    add("longer", [](HexModel &model) { model.selectTo(0); });
    add("other-bytes", [](HexModel &model) {
        model.setBytes(QByteArray(large, 'x'));
        QVERIFY(model.select(0, large));
    });
    add("many-changes", [](HexModel &model) {
        for (int i = 0; i < 200; ++i) {
            QVERIFY(model.applyPatch(i, "new"));
            QVERIFY(model.select(i, large - i));
        }
    });
}

void TestHexInspector::counting_isGivenUpAndRestarted()
{
    QFETCH(std::function<void(HexModel &)>, change);
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(1, large - 1));
    QStringList shown;
    connect(m_inspector.get(), &HexInspector::sumsChanged, this, [this, &shown] {
        if (!sum(u"SHA-256"_s).isEmpty())
            shown.append(sum(u"SHA-256"_s));
    });
    change(*m_model);
    QVERIFY(m_inspector->isCounting());
    WAIT_VERIFY(!m_inspector->isCounting());
    // Nothing is shown of what was given up.
    const QByteArrayView selected =
        QByteArrayView(m_model->bytes()).sliced(m_model->selectionStart(), m_model->selectionLength());
    QCOMPARE(shown, QStringList(sha256(selected)));
}

void TestHexInspector::counting_letsGoOfTheBytes()
{
    m_model->setBytes(counting(large));
    const char *const place = m_model->bytes().constData();
    for (int i = 0; i < 100; ++i) {
        QVERIFY(m_model->select(1, large - 1));
        QVERIFY(m_inspector->isCounting());
        QVERIFY(m_model->applyPatch(i, "x"));
        QCOMPARE(static_cast<const void *>(m_model->bytes().constData()), static_cast<const void *>(place));
    }
    WAIT_VERIFY(!m_inspector->isCounting());
    QVERIFY(m_model->applyPatch(0, "y"));
    QCOMPARE(static_cast<const void *>(m_model->bytes().constData()), static_cast<const void *>(place));
}

void TestHexInspector::counting_endsWithTheSelection()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    m_model->setCursor(0);
    QVERIFY(!m_inspector->isCounting());
    // What was said of the one that was given up comes before what is said of the next.
    QVERIFY(m_model->select(0, large / 2));
    WAIT_VERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"SHA-256"_s), sha256(QByteArrayView(m_model->bytes()).first(large / 2)));
}

void TestHexInspector::counting_endsWithTheFile()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    m_model->setBytes({});
    QVERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"Length"_s), QString());
    QCoreApplication::processEvents();
    QCOMPARE(sum(u"SHA-256"_s), QString());
}

void TestHexInspector::counting_endsWhenInactive()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    m_inspector->setActive(false);
    QVERIFY(!m_inspector->isCounting());
    m_inspector->setActive(true);
    QVERIFY(m_inspector->isCounting());
    WAIT_VERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"SHA-256"_s), sha256(m_model->bytes()));
}

void TestHexInspector::counting_endsWithTheInspector()
{
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    QVERIFY(m_inspector->isCounting());
    m_inspector.reset();
    QVERIFY(m_model->applyPatch(0, "still"));
}

void TestHexInspector::counting_outlivesTheModel()
{
    const QByteArray bytes = counting(large);
    m_model->setBytes(bytes);
    QVERIFY(m_model->select(0, large));
    m_model.reset();
    QVERIFY(m_inspector->isCounting());
    WAIT_VERIFY(!m_inspector->isCounting());
    QCOMPARE(sum(u"SHA-256"_s), sha256(bytes));
    QVERIFY(!m_inspector->hexModel());
}

void TestHexInspector::hexModel_isExchanged()
{
    const QSignalSpy hexModelChanged(m_inspector.get(), &HexInspector::hexModelChanged);
    m_model->setBytes(counting(large));
    QVERIFY(m_model->select(0, large));
    HexModel other;
    other.setBytes("z");
    m_inspector->setHexModel(&other);
    QVERIFY(!m_inspector->isCounting());
    QCOMPARE(value(u"ASCII"_s), u"z"_s);
    QCOMPARE(sum(u"Length"_s), QString());
    m_model->setCursor(1);
    m_model->setBytes("Q");
    QCOMPARE(value(u"ASCII"_s), u"z"_s);
    m_inspector->setHexModel(&other);
    QCOMPARE(hexModelChanged.count(), 1);
    m_inspector->setHexModel(nullptr);
    QCOMPARE(value(u"ASCII"_s), QString());
    QCOMPARE(hexModelChanged.count(), 2);
}

KVTEDITOR_TEST_MAIN(TestHexInspector)
#include "tst_HexInspector.moc"
