// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionarea.h"

#include "callmarker.h"
#include "extensiondescription.h"
#include "extensionfailures.h"
#include "extensionfolders.h"
#include "extensionslog.h"
#include "guardedextension.h"

#include <platform/toolkit/languagewatch.h>
#include <platform/toolkit/theme.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = ExtensionFailure::Kind;

ExtensionClock runningClock()
{
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

bool matchesWhole(const QRegularExpression &filter, const QString &name)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(filter.pattern()), filter.patternOptions())
        .match(name)
        .hasMatch();
}

} // namespace

class ExtensionArea::Private
{
public:
    Private(ExtensionArea *area, const QString &interfaceName, ExtensionClock clock)
        : q(area),
          interfaceName(interfaceName),
          clock(std::move(clock))
    {
    }

    void consider(const QString &path);
    void load(const ExtensionDescription &description);
    void fail(const ExtensionDescription &description, Kind kind, const QString &detail);
    void failed(GuardedExtension *extension, Kind kind, const QString &detail);
    void remove(GuardedExtension *extension);
    void removeSoon(GuardedExtension *extension);
    void removeAll();
    [[nodiscard]] bool removeStandIn(const QString &file);
    void tellSurroundings();
    void translateNames();

    ExtensionArea *q;
    QString interfaceName;
    ExtensionClock clock;
    std::optional<QRegularExpression> outOfProcess;
    std::optional<QRegularExpression> inProcess;
    ExtensionFailures failures;
    // Paths of description files by name, loaded or failed. Not what crashed or hung.
    QHash<QString, QString> considered;
    QMultiHash<QString, QString> blamed; // libraries that are not loaded for what they did, by the same name
    std::vector<std::unique_ptr<GuardedExtension>> extensions; // in the order of loading
    QSet<GuardedExtension *> leaving; // when the call that is under way has returned
};

void ExtensionArea::Private::fail(const ExtensionDescription &description, Kind kind, const QString &detail)
{
    failures.add({description.file, description.name, kind, detail, description.path});
}

// It may be on the stack.
void ExtensionArea::Private::failed(GuardedExtension *extension, Kind kind, const QString &detail)
{
    fail(extension->description(), kind, detail);
    if (kind != Kind::Nonsense)
        removeSoon(extension);
}

void ExtensionArea::Private::removeSoon(GuardedExtension *extension)
{
    QMetaObject::invokeMethod(
        extension, [this, extension] { remove(extension); }, Qt::QueuedConnection);
}

void ExtensionArea::Private::remove(GuardedExtension *extension)
{
    if (extension->isInCall()) {
        leaving.insert(extension);
        return;
    }
    leaving.remove(extension);
    const auto found = std::find_if(extensions.begin(), extensions.end(),
                                    [&](const auto &candidate) { return candidate.get() == extension; });
    if (found == extensions.end())
        return;
    const std::unique_ptr<GuardedExtension> removed = std::move(*found);
    extensions.erase(found);
    Q_EMIT q->extensionRemoved(extension);
}

void ExtensionArea::Private::removeAll()
{
    for (size_t i = extensions.size(); i > 0; --i)
        remove(extensions.at(i - 1).get());
    considered.clear();
    blamed.clear();
    for (const auto &extension : extensions) // still in a call
        considered.insert(extension->description().file, extension->description().path);
}

// False: it is in a call, and two of one name are never there.
bool ExtensionArea::Private::removeStandIn(const QString &file)
{
    const auto found = std::find_if(extensions.begin(), extensions.end(), [&](const auto &candidate) {
        return candidate->description().file == file;
    });
    if (found == extensions.end())
        return true;
    if ((*found)->isInCall())
        return false;
    remove(found->get());
    return true;
}

void ExtensionArea::Private::consider(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const bool isOut = outOfProcess && matchesWhole(*outOfProcess, name);
    if (considered.contains(name) || !(isOut || (inProcess && matchesWhole(*inProcess, name))))
        return;
    considered.insert(name, path);
    const ExtensionDescription description = ExtensionDescription::read(path);
    if (description.hidden)
        return;
    if (isOut)
        fail(description, Kind::Start, u"%1: there is no other process for extensions"_s.arg(path));
    else if (!description.fault.isEmpty())
        fail(description, Kind::Description, u"%1: %2"_s.arg(path, description.fault));
    else if (description.interfaceName != interfaceName)
        fail(description, Kind::OtherInterface,
             u"%1: it implements “%2”, wanted is “%3”"_s.arg(path, description.interfaceName, interfaceName));
    else
        load(description);
}

void ExtensionArea::Private::load(const ExtensionDescription &description)
{
    const QString library = description.libraryPath(extensionfolders::libraries(description.path));
    if (library.isEmpty()) {
        fail(description, Kind::LibraryMissing,
             u"%1: there is no “%2”"_s.arg(description.path, description.library));
        return;
    }
    auto extension = std::make_unique<GuardedExtension>(description, library, clock);
    const CallMarker &marker = extension->marker();
    if (marker.past() != CallMarker::Past::Clean) {
        const bool hasCrashed = marker.past() == CallMarker::Past::Crashed;
        considered.remove(description.file);
        blamed.insert(description.file, library);
        fail(description, hasCrashed ? Kind::Crashed : Kind::Hung,
             (hasCrashed ? u"the program crashed in %1 the last time; %2 is not loaded"_s
                         : u"%1 did not return the last time; %2 is not loaded"_s)
                 .arg(QString::fromUtf8(marker.pastCall()), library));
        return;
    }
    GuardedExtension *loaded = extension.get();
    QObject::connect(loaded, &GuardedExtension::failed, q,
                     [this, loaded](Kind kind, const QString &detail) { failed(loaded, kind, detail); });
    QObject::connect(loaded, &GuardedExtension::returned, q, [this, loaded] {
        if (leaving.contains(loaded))
            removeSoon(loaded);
    });
    if (!loaded->load())
        return;
    qCInfo(extensionsLog, "loaded “%ls” from %ls", qUtf16Printable(description.name),
           qUtf16Printable(library));
    extensions.push_back(std::move(extension));
    Q_EMIT q->extensionInstantiated(loaded);
}

void ExtensionArea::Private::tellSurroundings()
{
    for (const auto &extension : extensions)
        extension->surroundingsChanged();
}

// A description that is gone or was damaged meanwhile changes nothing.
void ExtensionArea::Private::translateNames()
{
    QSet<QString> paths;
    for (const auto &extension : extensions)
        paths.insert(extension->description().path);
    for (const ExtensionFailure &failure : failures.list())
        paths.insert(failure.path);
    for (const QString &path : std::as_const(paths)) {
        const ExtensionDescription description = ExtensionDescription::read(path);
        if (description.name == description.file)
            continue;
        failures.rename(path, description.name);
        for (const auto &extension : extensions) {
            if (extension->description().path == path)
                extension->setName(description.name);
        }
    }
}

ExtensionArea::ExtensionArea(const QString &interfaceName, QObject *parent)
    : ExtensionArea(interfaceName, runningClock(), parent)
{
}

ExtensionArea::ExtensionArea(const QString &interfaceName, ExtensionClock clock, QObject *parent)
    : QObject(parent),
      d(std::make_unique<Private>(this, interfaceName, std::move(clock)))
{
    connect(toolkit::Theme::instance(), &toolkit::Theme::themeChangeCompleted, this,
            [this] { d->tellSurroundings(); });
    connect(toolkit::LanguageWatch::instance(), &toolkit::LanguageWatch::changed, this, [this] {
        d->translateNames();
        d->tellSurroundings();
    });
}

ExtensionArea::~ExtensionArea()
{
    while (!d->extensions.empty())
        d->extensions.pop_back();
}

void ExtensionArea::setOutOfProcessFilter(const QRegularExpression &filter)
{
    d->outOfProcess = filter;
}

void ExtensionArea::setInProcessFilter(const QRegularExpression &filter)
{
    d->inProcess = filter;
}

void ExtensionArea::init()
{
    d->leaving.removeIf([](const GuardedExtension *extension) { return !extension->hasFailed(); });
    for (const QString &path : extensionfolders::find(extensionfolders::descriptions()))
        d->consider(path);
}

void ExtensionArea::unload()
{
    d->removeAll();
    d->failures.clear();
}

ExtensionFailures *ExtensionArea::failures() const
{
    return &d->failures;
}

void ExtensionArea::tryAgain(const QString &file)
{
    if (!d->removeStandIn(file))
        return;
    const QStringList libraries = d->blamed.values(file);
    for (const QString &library : libraries)
        CallMarker::forget(library);
    d->blamed.remove(file);
    d->failures.remove(file);
    d->considered.remove(file);
    init();
}
