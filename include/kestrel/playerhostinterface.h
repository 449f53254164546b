// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QGraphicsWidget;
QT_END_NAMESPACE

// How an extension talks back to the player that hosts it. The host makes it; an extension gets it from its
// ActionMediator and calls the virtual functions only, on the GUI thread, so that it links nothing of the
// host. What they ask for is done after they have returned, in a turn of the event loop of its own, and of
// several askings in one turn only the last. The signals are for the host.
class PlayerHostInterface : public QObject
{
    Q_OBJECT

public:
    explicit PlayerHostInterface(QObject *parent = nullptr);
    ~PlayerHostInterface() override;

    // Opens a page of its own with this widget below this title, one line; the person leaves it with Back.
    // The widget stays the extension's, which deletes it when it is deleted itself, or earlier: then the page
    // is left. It may be shown again and again; while it is shown, nothing happens.
    virtual void showSubPage(QGraphicsWidget *widget, const QString &title);
    // Plays entry `index` of a list of addresses. `callerId` is a word of the extension's own for itself.
    virtual void play(const QStringList &uriList, uint index, const QString &callerId);

    // What is shown or was shown last; null when there was nothing or it was deleted.
    [[nodiscard]] virtual QGraphicsWidget *subPageWidget() const;
    [[nodiscard]] virtual QString title() const;

Q_SIGNALS:
    void subPageWidgetChanged();
    void playRequested(QStringList uriList, uint index, QString callerId);
    // The extension asked for what cannot be done; nothing else comes of it. English, for the log.
    void refused(QString reason);

private:
    struct SubPage;
    struct PlayRequest;
    bool isOnItsThread();
    void announceSubPage();
    void announcePlay();

    QPointer<QGraphicsWidget> m_subPageWidget;
    QString m_title;
    std::unique_ptr<SubPage> m_askedSubPage;
    std::unique_ptr<PlayRequest> m_askedPlay;
};
