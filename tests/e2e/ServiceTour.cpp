#include "ServiceTour.h"

#include "SampleContainer.h"
#include "app/AppState.h"
#include "support/TestFiles.h"

#include <QQuickItem>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {

const QString baseName = u"five-modules.kvt"_s;
const QString donorName = u"donor.kvt"_s;
const QString binName = u"flash.bin"_s;

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
    check(base.count(old) == 1, u"a segment's bytes that stand in the base once"_s);
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
    m_window.app()->openKvt(m_samples + '/'_L1 + baseName);
    m_window.waitFor([this] { return m_window.app()->modules().size() == 5; }, u"the five modules"_s);
    const QString view = u"convertView"_s;
    m_window.click(u"nav_convert"_s);
    m_picture(u"convert"_s);
    press(view, u"KVT \u2192 BIN"_s);
    m_window.waitForStatus(u"Saved five-modules.bin"_s);
    check(sample(u"five-modules.bin"_s) == segmentsOf(sample(baseName)), u"the converted BIN"_s);

    press(view, u"BIN \u2192 KVT"_s);
    m_window.chooseFile(u"five-modules.bin"_s);
    m_window.waitForStatus(u"Saved imported.kvt"_s);
    check(m_window.app()->fileName() == "imported.kvt"_L1, u"the imported file to be open"_s);
    check(segmentsOf(sample(u"imported.kvt"_s)) == sample(u"five-modules.bin"_s), u"the imported bytes"_s);
    m_picture(u"converted"_s);
}

void ServiceTour::swapSegments()
{
    const QString view = u"segmentsView"_s;
    m_window.click(u"nav_segments"_s);
    m_picture(u"segments-empty"_s);
    press(view, u"Pick base .kvt"_s);
    m_window.chooseFile(baseName);
    m_window.waitForStatus(u"base set: %1"_s.arg(baseName));
    press(view, u"Pick donor .kvt"_s);
    m_window.chooseFile(donorName);
    m_window.waitForStatus(u"donor set: %1"_s.arg(donorName));
    press(view, u"SEGMENT SWAP"_s);
    m_window.waitForStatusEnding(u" swap candidate(s)."_s);
    const QVariantList candidates = m_window.app()->swapCandidates();
    check(candidates.size() >= 5, u"at least five candidates"_s);

    // All off, then two of them on.
    const auto box = [&](const QString &text) {
        return m_window.inside(
            view,
            [&](const QQuickItem *item) {
                return item->inherits("QQuickCheckBox") && item->parentItem()
                    && item->parentItem()->property("text").toString() == text;
            },
            u"the box \"%1\""_s.arg(text));
    };
    m_window.click(box(u"Select all"_s));
    const QList<int> kept{1, 3};
    QByteArray expected = sample(baseName);
    for (const int index : kept) {
        const QVariantMap candidate = candidates.at(index).toMap();
        m_window.click(box(candidate.value(u"label"_s).toString()));
        expected = withSegment(expected, sample(donorName), candidate.value(u"targetIndex"_s).toInt(),
                               candidate.value(u"donorIndex"_s).toInt());
    }
    for (int i = 0; i < candidates.size(); ++i) {
        const QVariantMap candidate = m_window.app()->swapCandidates().at(i).toMap();
        check(candidate.value(u"selected"_s).toBool() == kept.contains(i),
              u"the selection of candidate %1"_s.arg(i));
    }
    m_picture(u"segments"_s);
    press(view, u"Apply selected"_s);
    m_window.waitForStatus(u"Saved swapped.kvt"_s);
    check(expected != sample(baseName) && sample(u"swapped.kvt"_s) == expected,
          u"the chosen segments, and nothing else, to be swapped"_s);
    check(m_window.app()->fileName() == "swapped.kvt"_L1, u"the swapped file to be open"_s);
    m_window.waitFor([this] { return m_window.app()->modules().size() == 5; },
                     u"the service to read the swapped file"_s);
}

void ServiceTour::buyDefinition()
{
    const QString view = u"xdfView"_s;
    m_window.click(u"nav_xdf"_s);
    m_picture(u"xdf-maker-empty"_s);
    type(view, u"Email"_s, u"demo@vox.invalid"_s);
    type(view, u"Password"_s, u"demo"_s);
    press(view, u"LOGIN"_s);
    m_window.waitForStatus(u"XDF signed in."_s);
    press(view, u"Load catalog"_s);
    m_window.waitForStatusEnding(u" item(s)."_s);
    const QVariantList items = m_window.app()->xdfItems();
    check(!items.isEmpty(), u"the catalogue to have items"_s);
    m_picture(u"xdf-maker"_s);
    press(u"xdfItem0"_s, u"Download"_s);
    m_window.waitForStatus(u"Downloaded XDF."_s);
    const QString title = items.constFirst().toMap().value(u"title"_s).toString();
    check(sample(title + u".xdf"_s).startsWith('<'), u"the downloaded definition"_s);
}

void ServiceTour::patchBin()
{
    const QString view = u"patcherView"_s;
    m_window.click(u"nav_patcher"_s);
    const QString credits = m_window.app()->xdfCredits();
    press(view, u"Load patches"_s);
    m_window.waitForStatusEnding(u" for %1."_s.arg(m_window.app()->moduleOneOs()));
    check(!m_window.app()->patchItems().isEmpty(), u"patches for the OS"_s);
    check(m_window.app()->xdfCredits().toInt() < credits.toInt(), u"the download to have taken credits"_s);
    m_picture(u"bin-patcher"_s);
    press(u"patch0"_s, u"Apply to BIN"_s);
    m_window.chooseFile(binName);
    m_window.waitForStatus(u"Patch applied."_s);
    const QByteArray patched = sample(u"flash_patched.bin"_s);
    check(patched.size() == sample(binName).size() && patched != sample(binName), u"the patched copy"_s);
}

void ServiceTour::openStockFile()
{
    const QString view = u"stockView"_s;
    m_window.click(u"nav_stock"_s);
    m_picture(u"stock-files-empty"_s);
    press(view, u"DOWNLOAD & OPEN"_s);
    m_window.waitForStatus(u"Select a stock file first."_s);
    press(view, u"SEARCH"_s);
    m_window.waitForStatusEnding(u" stock file(s)."_s);
    const qsizetype all = m_window.app()->stockRows().size();
    type(view, u"Keyword"_s, u".kvt"_s);
    m_window.key(Qt::Key_Return);
    m_window.waitFor([&] { return m_window.app()->stockRows().size() < all; }, u"fewer rows"_s);
    const QString name = m_window.app()->stockRows().constFirst().toMap().value(u"filename"_s).toString();
    m_window.click(m_window.inside(
        view, [&](const QQuickItem *item) { return item->property("text").toString() == name; }, name));
    m_picture(u"stock-files"_s);
    press(view, u"DOWNLOAD & OPEN"_s);
    AppState *const app = m_window.app();
    m_window.waitFor([&] { return app->fileName() == name && app->tab() == "main"_L1; },
                     u"the stock file to open"_s);
    m_window.waitFor([&] { return !app->modules().isEmpty(); }, u"its identifiers"_s);
    m_picture(u"stock-file-opened"_s);
}

void ServiceTour::writeTicket()
{
    const QString view = u"feedbackView"_s;
    m_window.click(u"nav_feedback"_s);
    m_picture(u"feedback-empty"_s);
    type(view, u"Your name"_s, u"A. Tuner"_s);
    type(view, u"Description"_s, u"The list could be longer."_s);
    press(view, u"Submit ticket"_s);
    AppState *const app = m_window.app();
    m_window.waitFor([&] { return app->status().startsWith("Ticket: "_L1); }, u"the ticket's number"_s);
    type(view, u"Ticket id"_s, app->status().section(' '_L1, 1));
    press(view, u"Load conversation"_s);
    m_window.waitForStatus(u"Loaded ticket."_s);
    check(app->threadText().contains("The list could be longer."_L1), u"the conversation"_s);
    type(view, u"Reply"_s, u"Much longer."_s);
    press(view, u"Send reply"_s);
    m_window.waitFor([&] { return app->threadText().contains("Much longer."_L1); },
                     u"the reply in the conversation"_s);
    m_picture(u"feedback"_s);
}

void ServiceTour::checkForUpdate()
{
    press(u"feedbackView"_s, u"Check update"_s);
    m_window.waitForStatus(u"You are running the latest version (%1)."_s.arg(m_window.app()->version()));
}

void ServiceTour::press(const QString &view, const QString &text) const
{
    m_window.click(m_window.inside(
        view,
        [&text](const QQuickItem *item) {
            return item->inherits("QQuickAbstractButton") && item->isEnabled()
                && item->property("text").toString() == text;
        },
        u"the button %1"_s.arg(text)));
}

void ServiceTour::type(const QString &view, const QString &title, const QString &text) const
{
    const QQuickItem *const field = m_window.inside(
        view,
        [&title](const QQuickItem *item) {
            return item->property("title").toString() == title && item->property("input").isValid();
        },
        u"the field %1"_s.arg(title));
    m_window.typeInto(field->property("input").value<QQuickItem *>(), text);
}

QByteArray ServiceTour::sample(const QString &name) const
{
    return contentOf(m_samples + '/'_L1 + name);
}
