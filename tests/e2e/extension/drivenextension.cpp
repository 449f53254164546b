// SPDX-License-Identifier: GPL-3.0-or-later
// An extension that a test operates by its colours: an orange tile on the details page opens a page of a blue
// one, and that plays the first video of the folder.
#include <kestrel/actionmediator.h>
#include <kestrel/extensioninterface.h>
#include <kestrel/playerhostinterface.h>

#include <QDir>
#include <QFileInfo>
#include <QGraphicsWidget>
#include <QPainter>
#include <QUrl>

#include <functional>
#include <memory>
#include <utility>

class Tile : public QGraphicsWidget
{
public:
    Tile(const QColor &color, std::function<void()> tapped) : m_color(color), m_tapped(std::move(tapped))
    {
        setPreferredSize(320, 96);
    }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        painter->fillRect(rect(), m_color);
    }
    void mousePressEvent(QGraphicsSceneMouseEvent *) override { }
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *) override { m_tapped(); }

private:
    QColor m_color;
    std::function<void()> m_tapped;
};

class DrivenExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    void setActionMediator(ActionMediator *mediator) override { m_mediator = mediator; }
    QGraphicsWidget *widget() override
    {
        m_tile = std::make_unique<Tile>(QColor(250, 120, 20), [this] { showAll(); });
        return m_tile.get();
    }
    void contentChanged(const ContentRecord &content) override
    {
        const QFileInfo file(QUrl(content.uri()).toLocalFile());
        const QStringList names = file.dir().entryList(QDir::Files, QDir::Name);
        m_first = QUrl::fromLocalFile(file.dir().filePath(names.value(0))).toString(QUrl::FullyEncoded);
    }

private:
    void showAll()
    {
        if (!m_page)
            m_page = std::make_unique<Tile>(QColor(20, 120, 250), [this] {
                m_mediator->hostInterface()->play({m_first}, 0, QStringLiteral("driven"));
            });
        m_mediator->hostInterface()->showSubPage(m_page.get(), QStringLiteral("More of them"));
    }

    ActionMediator *m_mediator = nullptr;
    std::unique_ptr<Tile> m_tile;
    std::unique_ptr<Tile> m_page;
    QString m_first;
};

#include "drivenextension.moc"
