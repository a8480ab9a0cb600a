#include "ServiceTour.h"

#include "SampleContainer.h"
#include "app/AppState.h"

#include <QQuickItem>
#include <QVariantMap>

namespace {

const QString baseName = QStringLiteral("five-modules.kvt");
const QString donorName = QStringLiteral("donor.kvt");
const QString binName = QStringLiteral("flash.bin");

// What the file would be converted to, by the stand-in's own rule: its segments, one after the other.
QByteArray segmentsOf(const QByteArray &container)
{
    const SampleTune tune = SampleContainer::read(container).value();
    QByteArray bytes;
    for (const SampleModule &module : tune.modules) {
        for (const SampleSegment &segment : module.segments)
            bytes += segment.bytes;
    }
    return bytes;
}

// The base with one segment's bytes from the donor; the segments are counted through all modules.
QByteArray withSegment(QByteArray base, const QByteArray &donor, int target, int source)
{
    const auto segment = [](const QByteArray &container, int wanted) {
        const SampleTune tune = SampleContainer::read(container).value();
        for (const SampleModule &module : tune.modules) {
            if (wanted < module.segments.size())
                return module.segments.at(wanted).bytes;
            wanted -= static_cast<int>(module.segments.size());
        }
        throw DriveError("there is no such segment");
    };
    const QByteArray old = segment(base, target);
    check(base.count(old) == 1, QStringLiteral("a segment's bytes that stand in the base once"));
    return base.replace(old, segment(donor, source));
}

} // namespace

ServiceTour::ServiceTour(const WindowDriver &window, const QString &samples,
                         const std::function<void(const QString &)> &picture)
    : m_window(window)
    , m_samples(samples)
    , m_picture(picture)
{
}

void ServiceTour::run()
{
    convert();
    swapSegments();
    buyDefinition();
    patchBin();
    openStockFile();
    writeTicket();
    checkForUpdate();
}

void ServiceTour::convert()
{
    m_window.app()->openKvt(m_samples + QLatin1Char('/') + baseName);
    m_window.waitFor([this] { return m_window.app()->modules().size() == 5; },
                     QStringLiteral("the five modules"));
    const QString view = QStringLiteral("convertView");
    m_window.click(QStringLiteral("nav_convert"));
    m_picture(QStringLiteral("convert"));
    press(view, QStringLiteral("KVT \u2192 BIN"));
    m_window.waitForStatus(QStringLiteral("Saved five-modules.bin"));
    check(sample(QStringLiteral("five-modules.bin")) == segmentsOf(sample(baseName)),
          QStringLiteral("the converted BIN"));

    press(view, QStringLiteral("BIN \u2192 KVT"));
    m_window.chooseFile(QStringLiteral("five-modules.bin"));
    m_window.waitForStatus(QStringLiteral("Saved imported.kvt"));
    check(m_window.app()->fileName() == QLatin1String("imported.kvt"),
          QStringLiteral("the imported file to be open"));
    check(segmentsOf(sample(QStringLiteral("imported.kvt"))) == sample(QStringLiteral("five-modules.bin")),
          QStringLiteral("the imported bytes"));
    m_picture(QStringLiteral("converted"));
}

void ServiceTour::swapSegments()
{
    const QString view = QStringLiteral("segmentsView");
    m_window.click(QStringLiteral("nav_segments"));
    m_picture(QStringLiteral("segments-empty"));
    press(view, QStringLiteral("Pick base .kvt"));
    m_window.chooseFile(baseName);
    m_window.waitForStatus(QStringLiteral("base set: %1").arg(baseName));
    press(view, QStringLiteral("Pick donor .kvt"));
    m_window.chooseFile(donorName);
    m_window.waitForStatus(QStringLiteral("donor set: %1").arg(donorName));
    press(view, QStringLiteral("SEGMENT SWAP"));
    m_window.waitForStatusEnding(QStringLiteral(" swap candidate(s)."));
    const QVariantList candidates = m_window.app()->swapCandidates();
    check(candidates.size() >= 5, QStringLiteral("at least five candidates"));

    // All off, then two of them on.
    const auto box = [&](const QString &text) {
        return m_window.inside(
            view,
            [&](const QQuickItem *item) {
                return item->inherits("QQuickCheckBox") && item->parentItem()
                    && item->parentItem()->property("text").toString() == text;
            },
            QStringLiteral("the box \"%1\"").arg(text));
    };
    m_window.click(box(QStringLiteral("Select all")));
    const QList<int> kept{1, 3};
    QByteArray expected = sample(baseName);
    for (const int index : kept) {
        const QVariantMap candidate = candidates.at(index).toMap();
        m_window.click(box(candidate.value(QStringLiteral("label")).toString()));
        expected =
            withSegment(expected, sample(donorName), candidate.value(QStringLiteral("targetIndex")).toInt(),
                        candidate.value(QStringLiteral("donorIndex")).toInt());
    }
    for (int i = 0; i < candidates.size(); ++i) {
        const QVariantMap candidate = m_window.app()->swapCandidates().at(i).toMap();
        check(candidate.value(QStringLiteral("selected")).toBool() == kept.contains(i),
              QStringLiteral("the selection of candidate %1").arg(i));
    }
    m_picture(QStringLiteral("segments"));
    press(view, QStringLiteral("Apply selected"));
    m_window.waitForStatus(QStringLiteral("Saved swapped.kvt"));
    check(expected != sample(baseName) && sample(QStringLiteral("swapped.kvt")) == expected,
          QStringLiteral("the chosen segments, and nothing else, to be swapped"));
    check(m_window.app()->fileName() == QLatin1String("swapped.kvt"),
          QStringLiteral("the swapped file to be open"));
    m_window.waitFor([this] { return m_window.app()->modules().size() == 5; },
                     QStringLiteral("the service to read the swapped file"));
}

void ServiceTour::buyDefinition()
{
    const QString view = QStringLiteral("xdfView");
    m_window.click(QStringLiteral("nav_xdf"));
    m_picture(QStringLiteral("xdf-maker-empty"));
    type(view, QStringLiteral("Email"), QStringLiteral("demo@vox.invalid"));
    type(view, QStringLiteral("Password"), QStringLiteral("demo"));
    press(view, QStringLiteral("LOGIN"));
    m_window.waitForStatus(QStringLiteral("XDF signed in."));
    press(view, QStringLiteral("Load catalog"));
    m_window.waitForStatusEnding(QStringLiteral(" item(s)."));
    const QVariantList items = m_window.app()->xdfItems();
    check(!items.isEmpty(), QStringLiteral("the catalogue to have items"));
    m_picture(QStringLiteral("xdf-maker"));
    press(QStringLiteral("xdfItem0"), QStringLiteral("Download"));
    m_window.waitForStatus(QStringLiteral("Downloaded XDF."));
    const QString title = items.constFirst().toMap().value(QStringLiteral("title")).toString();
    check(sample(title + QStringLiteral(".xdf")).startsWith('<'),
          QStringLiteral("the downloaded definition"));
}

void ServiceTour::patchBin()
{
    const QString view = QStringLiteral("patcherView");
    m_window.click(QStringLiteral("nav_patcher"));
    const QString credits = m_window.app()->xdfCredits();
    press(view, QStringLiteral("Load patches"));
    m_window.waitForStatusEnding(QStringLiteral(" for %1.").arg(m_window.app()->moduleOneOs()));
    check(!m_window.app()->patchItems().isEmpty(), QStringLiteral("patches for the OS"));
    check(m_window.app()->xdfCredits().toInt() < credits.toInt(),
          QStringLiteral("the download to have taken credits"));
    m_picture(QStringLiteral("bin-patcher"));
    press(QStringLiteral("patch0"), QStringLiteral("Apply to BIN"));
    m_window.chooseFile(binName);
    m_window.waitForStatus(QStringLiteral("Patch applied."));
    const QByteArray patched = sample(QStringLiteral("flash_patched.bin"));
    check(patched.size() == sample(binName).size() && patched != sample(binName),
          QStringLiteral("the patched copy"));
}

void ServiceTour::openStockFile()
{
    const QString view = QStringLiteral("stockView");
    m_window.click(QStringLiteral("nav_stock"));
    m_picture(QStringLiteral("stock-files-empty"));
    press(view, QStringLiteral("DOWNLOAD & OPEN"));
    m_window.waitForStatus(QStringLiteral("Select a stock file first."));
    press(view, QStringLiteral("SEARCH"));
    m_window.waitForStatusEnding(QStringLiteral(" stock file(s)."));
    const qsizetype all = m_window.app()->stockRows().size();
    type(view, QStringLiteral("Keyword"), QStringLiteral(".kvt"));
    m_window.key(Qt::Key_Return);
    m_window.waitFor([&] { return m_window.app()->stockRows().size() < all; }, QStringLiteral("fewer rows"));
    const QString name =
        m_window.app()->stockRows().constFirst().toMap().value(QStringLiteral("filename")).toString();
    m_window.click(m_window.inside(
        view, [&](const QQuickItem *item) { return item->property("text").toString() == name; }, name));
    m_picture(QStringLiteral("stock-files"));
    press(view, QStringLiteral("DOWNLOAD & OPEN"));
    AppState *const app = m_window.app();
    m_window.waitFor([&] { return app->fileName() == name && app->tab() == QLatin1String("main"); },
                     QStringLiteral("the stock file to open"));
    m_window.waitFor([&] { return !app->modules().isEmpty(); }, QStringLiteral("its identifiers"));
    m_picture(QStringLiteral("stock-file-opened"));
}

void ServiceTour::writeTicket()
{
    const QString view = QStringLiteral("feedbackView");
    m_window.click(QStringLiteral("nav_feedback"));
    m_picture(QStringLiteral("feedback-empty"));
    type(view, QStringLiteral("Your name"), QStringLiteral("A. Tuner"));
    type(view, QStringLiteral("Description"), QStringLiteral("The list could be longer."));
    press(view, QStringLiteral("Submit ticket"));
    AppState *const app = m_window.app();
    m_window.waitFor([&] { return app->status().startsWith(QLatin1String("Ticket: ")); },
                     QStringLiteral("the ticket's number"));
    type(view, QStringLiteral("Ticket id"), app->status().section(QLatin1Char(' '), 1));
    press(view, QStringLiteral("Load conversation"));
    m_window.waitForStatus(QStringLiteral("Loaded ticket."));
    check(app->threadText().contains(QLatin1String("The list could be longer.")),
          QStringLiteral("the conversation"));
    type(view, QStringLiteral("Reply"), QStringLiteral("Much longer."));
    press(view, QStringLiteral("Send reply"));
    m_window.waitFor([&] { return app->threadText().contains(QLatin1String("Much longer.")); },
                     QStringLiteral("the reply in the conversation"));
    m_picture(QStringLiteral("feedback"));
}

void ServiceTour::checkForUpdate()
{
    press(QStringLiteral("feedbackView"), QStringLiteral("Check update"));
    m_window.waitForStatus(
        QStringLiteral("You are running the latest version (%1).").arg(m_window.app()->version()));
}

void ServiceTour::press(const QString &view, const QString &text) const
{
    m_window.click(m_window.inside(
        view,
        [&text](const QQuickItem *item) {
            return item->inherits("QQuickAbstractButton") && item->isEnabled()
                && item->property("text").toString() == text;
        },
        QStringLiteral("the button %1").arg(text)));
}

void ServiceTour::type(const QString &view, const QString &title, const QString &text) const
{
    const QQuickItem *const field = m_window.inside(
        view,
        [&title](const QQuickItem *item) {
            return item->property("title").toString() == title && item->property("input").isValid();
        },
        QStringLiteral("the field %1").arg(title));
    m_window.typeInto(field->property("input").value<QQuickItem *>(), text);
}

QByteArray ServiceTour::sample(const QString &name) const
{
    return contents(m_samples + QLatin1Char('/') + name);
}
