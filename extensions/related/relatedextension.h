// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pictures.h"
#include "provider.h"
#include "providersetting.h"
#include "relatedfinder.h"
#include "relatedrows.h"
#include "relatedtexts.h"

#include <kestrel/extensioninterface.h>

#include <QObject>

#include <memory>

class RelatedColumn;

// Videos that belong to the one whose details are shown: a few below the details, all on a page of their own.
class RelatedExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    RelatedExtension();
    ~RelatedExtension() override;

    void setActionMediator(ActionMediator *mediator) override;
    QGraphicsWidget *widget() override;
    void contentChanged(const ContentRecord &content) override;
    void surroundingsChanged() override;

private:
    [[nodiscard]] QList<RelatedEntry> entries() const;
    [[nodiscard]] RelatedRows::List list() const;
    void libraryAnswered();
    void providerChosen();
    void askProvider();
    void askProviderAgain();
    void tryAgain();
    void show();
    void fillPage();
    [[nodiscard]] bool hasVideo() const;
    void play(const QString &url);
    void seenChanged();

    ActionMediator *m_mediator = nullptr;
    RelatedTexts m_texts;
    Pictures m_pictures;
    RelatedFinder m_finder;
    ProviderSetting m_setting;
    Provider m_provider;
    QString m_askedOnline; // the address of the video that the provider was asked for
    RelatedRows m_rows;
    std::unique_ptr<RelatedColumn> m_block; // on the details page
    std::unique_ptr<RelatedColumn> m_page;
    bool m_isPageStale = true; // its rows are made when it is seen
};
