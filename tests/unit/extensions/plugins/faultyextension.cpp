// SPDX-License-Identifier: GPL-3.0-or-later
// An extension that does what the environment variable FAULT says.
#include <kestrel/extensioninterface.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QGraphicsWidget>
#include <QPainter>
#include <QTimer>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <unistd.h>

namespace {

bool isFault(const char *name)
{
    return qgetenv("FAULT") == name;
}

// Not through a null pointer, which compilers look for.
volatile std::uintptr_t s_nowhere = 4096 - 64;

volatile unsigned s_computed = 0;

void crash()
{
    *reinterpret_cast<volatile int *>(s_nowhere) = 1;
}

// Runs when the library is loaded.
const bool s_isLoaded = [] {
    if (isFault("crash in library"))
        crash();
    return true;
}();

[[gnu::noinline]] int endless(int depth)
{
    volatile char room[4096] = {};
    room[0] = char(depth);
    return depth < 1'000'000'000 ? endless(depth + 1) + room[0] : 0;
}

class FaultyWidget : public QGraphicsWidget
{
public:
    void paint(QPainter *, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        if (isFault("crash in paint"))
            crash();
        while (isFault("compute for ever in paint"))
            s_computed = s_computed + 1;
        if (isFault("compute long in paint")) {
            s_computed = 0;
            for (const std::clock_t end = std::clock() + 3 * CLOCKS_PER_SEC; std::clock() < end;)
                s_computed = s_computed + 1;
            std::puts("computed");
            std::fflush(stdout);
        }
    }

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override
    {
        if (isFault("endless height"))
            return {1e300, which == Qt::MinimumSize ? std::numeric_limits<qreal>::infinity() : 1e300};
        if (isFault("no number"))
            return {std::numeric_limits<qreal>::quiet_NaN(), std::numeric_limits<qreal>::quiet_NaN()};
        return which == Qt::PreferredSize ? QSizeF(100, 80) : QGraphicsWidget::sizeHint(which, constraint);
    }
};

} // namespace

class FaultyExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    FaultyExtension()
    {
        if (isFault("throw in constructor"))
            throw std::runtime_error("no start today");
        if (isFault("throw what is no exception"))
            throw 7;
        if (isFault("crash in constructor"))
            crash();
        m_widget = new FaultyWidget;
    }
    ~FaultyExtension() override
    {
        if (isFault("crash in destructor"))
            crash();
        delete m_widget;
    }

    void setActionMediator(ActionMediator *mediator) override
    {
        m_mediator = mediator;
        if (isFault("throw in mediator"))
            throw std::runtime_error("no mediator");
        if (isFault("crash in timer"))
            QTimer::singleShot(0, this, [] { crash(); });
        if (isFault("throw in timer"))
            QTimer::singleShot(0, this, [] { throw std::runtime_error("uncaught"); });
        if (isFault("crash in thread"))
            std::thread([] { crash(); }).detach();
        if (isFault("hang in timer"))
            QTimer::singleShot(0, this, [] {
                std::puts("hangs");
                std::fflush(stdout);
                while (true)
                    pause();
            });
    }

    QGraphicsWidget *widget() override
    {
        if (isFault("throw in widget"))
            throw std::runtime_error("no widget");
        if (isFault("no widget"))
            return nullptr;
        if (isFault("widget deleted later"))
            QTimer::singleShot(0, this, &FaultyExtension::deleteWidget);
        return m_widget;
    }

    void contentChanged(const ContentRecord &content) override
    {
        if (isFault("throw in content"))
            throw std::runtime_error("no content");
        if (isFault("crash in content"))
            crash();
        if (isFault("overflow in content"))
            m_result = endless(0);
        if (isFault("abort in content"))
            std::abort();
        if (isFault("exit in content"))
            std::exit(0);
        while (isFault("hang in content"))
            pause();
        if (isFault("event loop in content")) {
            QEventLoop loop;
            connect(qApp, &QObject::objectNameChanged, &loop, &QEventLoop::quit);
            loop.exec();
        }
        if (isFault("widget deleted below an event loop")) {
            deleteWidget();
            QEventLoop loop;
            connect(qApp, &QObject::objectNameChanged, &loop, &QEventLoop::quit);
            loop.exec();
        }
        if (isFault("widget deleted in content"))
            deleteWidget();
        askForNonsense(content);
    }

    void surroundingsChanged() override
    {
        if (isFault("throw in surroundings"))
            throw std::runtime_error(std::string(100'000, 'x'));
    }

private:
    void deleteWidget()
    {
        delete m_widget;
        m_widget = nullptr;
    }

    void askForNonsense(const ContentRecord &content)
    {
        PlayerHostInterface *host = m_mediator->hostInterface();
        if (isFault("index beyond the list"))
            host->play({content.uri()}, 1, QString());
        if (isFault("empty list"))
            host->play({}, 0, QString());
        if (isFault("no address"))
            host->play({QStringLiteral("a film")}, 0, QString());
        if (isFault("page without widget"))
            host->showSubPage(nullptr, QStringLiteral("Nothing"));
        if (isFault("page that stands on one"))
            host->showSubPage(m_widget, QStringLiteral("Twice"));
        if (isFault("page that is deleted")) {
            QGraphicsWidget page;
            host->showSubPage(&page, QStringLiteral("Gone"));
        }
        if (isFault("signals by name")) {
            QMetaObject::invokeMethod(host, "playRequested", Q_ARG(QStringList, {content.uri()}),
                                      Q_ARG(uint, 4'000'000'000), Q_ARG(QString, QString()));
            QMetaObject::invokeMethod(host, "subPageWidgetChanged");
        }
        if (isFault("title of a book")) {
            m_page = std::make_unique<QGraphicsWidget>();
            host->showSubPage(m_page.get(), QStringLiteral("word\n").repeated(100'000));
        }
        if (isFault("other thread"))
            std::thread([host, content] { host->play({content.uri()}, 0, QString()); }).join();
        for (int i = 0; isFault("a thousand times") && i < 1000; ++i)
            host->play({content.uri()}, 0, QString::number(i));
    }

    QGraphicsWidget *m_widget = nullptr;
    std::unique_ptr<QGraphicsWidget> m_page;
    ActionMediator *m_mediator = nullptr;
    volatile int m_result = 0;
};

#include "faultyextension.moc"
