// SPDX-License-Identifier: GPL-3.0-or-later
#include "guardedextension.h"

#include "crashwitness.h"
#include "extensionframe.h"
#include "extensionslog.h"
#include "libraryfile.h"

#include <kestrel/playerhostinterface.h>

#include <QFile>
#include <QJsonObject>
#include <QLibrary>

#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = ExtensionFailure::Kind;

// Another file, or another content of it, is another fingerprint.
QByteArray fingerprint(const QString &library)
{
    struct stat found = {};
    stat(QFile::encodeName(library).constData(), &found);
    return QByteArray::number(qlonglong(found.st_size)) + ' ' + QByteArray::number(qlonglong(found.st_ino))
        + ' ' + QByteArray::number(qlonglong(found.st_mtim.tv_sec)) + '.'
        + QByteArray::number(qlonglong(found.st_mtim.tv_nsec)) + '\n';
}

// What the file says of itself, which is read without running anything of it. Empty: nothing against it.
std::pair<Kind, QString> objection(const QPluginLoader &loader, const QString &interfaceName)
{
    if (!isWholeLibrary(loader.fileName()))
        return {Kind::Start, u"%1 is not whole"_s.arg(loader.fileName())};
    const QJsonObject says = loader.metaData();
    if (says.isEmpty())
        return {Kind::Start, loader.errorString()};
    const int version = says.value("version"_L1).toInt();
    const bool isOther = (version >> 16) != QT_VERSION_MAJOR || ((version >> 8) & 0xff) > QT_VERSION_MINOR;
    if (version != 0 && isOther)
        return {Kind::OtherQt,
                u"%1 was made for Qt %2.%3, this is %4"_s.arg(loader.fileName())
                    .arg(version >> 16)
                    .arg((version >> 8) & 0xff)
                    .arg(QLatin1StringView(qVersion()))};
    if (says.value("IID"_L1).toString() != interfaceName)
        return {Kind::OtherInterface,
                u"%1 implements “%2”, wanted is “%3”"_s.arg(loader.fileName(),
                                                            says.value("IID"_L1).toString(), interfaceName)};
    return {};
}

} // namespace

GuardedExtension::GuardedExtension(const ExtensionDescription &description, const QString &library,
                                   ExtensionClock clock)
    : m_description(description),
      m_clock(std::move(clock)),
      m_loader(library),
      m_marker(std::make_unique<CallMarker>(library, fingerprint(library)))
{
    // All symbols now: what is missing shows here, not in the middle of a call. Its code stays until the
    // program ends, since nobody knows what still points there; a deleted extension can be made again.
    m_loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
}

GuardedExtension::~GuardedExtension()
{
    delete m_frame;
    m_extension = nullptr;
    guarded("its destructor", [this] { delete m_root; });
    crashwitness::unwatch(m_marker->descriptor());
}

// No failure twice: after the first one there is nothing to call.
void GuardedExtension::fail(Kind kind, const QString &detail)
{
    m_extension = nullptr;
    Q_EMIT failed(kind, detail);
}

template <typename Call> bool GuardedExtension::guarded(const char *name, Call call)
{
    const int marker = m_marker->descriptor();
    m_marker->enter(name);
    crashwitness::entered(marker, name);
    const qint64 begin = m_clock();
    ++m_depth;
    QString thrown;
    try {
        call();
    } catch (const std::exception &exception) {
        thrown = u"%1 threw: %2"_s.arg(QLatin1StringView(name), QString::fromLocal8Bit(exception.what()));
    } catch (...) {
        thrown = u"%1 threw"_s.arg(QLatin1StringView(name));
    }
    --m_depth;
    const qint64 took = m_clock() - begin;
    crashwitness::left(marker);
    m_marker->leave();
    if (took > FrameTime)
        qCWarning(extensionsLog, "“%ls” took %lld ms in %s, longer than a frame",
                  qUtf16Printable(m_description.name), static_cast<long long>(took), name);
    if (!thrown.isNull())
        fail(m_root ? Kind::Call : Kind::Start, thrown);
    if (m_depth == 0)
        Q_EMIT returned();
    return thrown.isNull();
}

bool GuardedExtension::load()
{
    if (const auto [kind, why] = objection(m_loader, m_description.interfaceName); !why.isEmpty()) {
        fail(kind, why);
        return false;
    }
    m_marker->begin();
    crashwitness::watch(m_marker->descriptor());
    bool isLoaded = false;
    if (!guarded("its library's start", [&] { isLoaded = m_loader.load(); }))
        return false;
    if (!isLoaded) {
        fail(Kind::Start, m_loader.errorString());
        return false;
    }
    crashwitness::setCode(
        m_marker->descriptor(),
        reinterpret_cast<const void *>(QLibrary::resolve(m_loader.fileName(), "qt_plugin_instance")));
    if (!guarded("its constructor", [this] { m_root = m_loader.instance(); }))
        return false;
    m_extension = m_root ? qobject_cast<ExtensionInterface *>(m_root.data()) : nullptr;
    if (!m_extension)
        fail(Kind::Start, u"%1 makes no extension"_s.arg(m_loader.fileName()));
    return m_extension != nullptr;
}

void GuardedExtension::setActionMediator(ActionMediator *mediator)
{
    if (!m_extension)
        return;
    watch(mediator->hostInterface());
    guarded("setActionMediator()", [&] { m_extension->setActionMediator(mediator); });
}

void GuardedExtension::takeWidget()
{
    QGraphicsWidget *content = nullptr;
    if (!guarded("widget()", [&] { content = m_extension->widget(); }))
        return;
    m_content = content;
    if (!content)
        fail(Kind::NoWidget, u"widget() returned none"_s);
}

QGraphicsWidget *GuardedExtension::widget()
{
    if (!m_content && m_extension)
        takeWidget();
    if (!m_content || !m_extension)
        return nullptr;
    if (!m_frame) {
        m_frame = new ExtensionFrame(m_content, ExtensionFrame::Place::SharedPage, m_clock);
        connect(m_frame, &ExtensionFrame::painted, this, &GuardedExtension::notePainting);
        connect(m_frame, &ExtensionFrame::contentDeleted, this,
                [this] { fail(Kind::WidgetGone, u"it deleted the widget that it had given"_s); });
    }
    return m_frame;
}

// Which may happen for each frame: said again only when it got worse.
void GuardedExtension::notePainting(qint64 took)
{
    if (took <= std::max(FrameTime, m_longestPainting))
        return;
    m_longestPainting = took;
    qCWarning(extensionsLog, "“%ls” took %lld ms to paint, longer than a frame",
              qUtf16Printable(m_description.name), static_cast<long long>(took));
}

void GuardedExtension::contentChanged(const ContentRecord &content)
{
    if (m_extension)
        guarded("contentChanged()", [&] { m_extension->contentChanged(content); });
}

void GuardedExtension::surroundingsChanged()
{
    if (m_extension)
        guarded("surroundingsChanged()", [this] { m_extension->surroundingsChanged(); });
}

void GuardedExtension::watch(PlayerHostInterface *host)
{
    if (!host)
        return;
    connect(host, &PlayerHostInterface::refused, this,
            [this](const QString &reason) { Q_EMIT failed(Kind::Nonsense, reason); });
    connect(host, &PlayerHostInterface::playRequested, this, [this](const QStringList &uriList, uint index) {
        if (index >= uint(uriList.size()))
            Q_EMIT failed(Kind::Nonsense, u"it asked for entry %1 of %2"_s.arg(index).arg(uriList.size()));
    });
}
