// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedextension.h"

#include "relatedcolumn.h"
#include "touchrow.h"

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

RelatedExtension::RelatedExtension()
    : m_rows(m_texts, m_pictures),
      m_block(std::make_unique<RelatedColumn>()),
      m_page(std::make_unique<RelatedColumn>())
{
    connect(&m_finder, &RelatedFinder::changed, this, &RelatedExtension::libraryAnswered);
    connect(&m_setting, &ProviderSetting::changed, this, &RelatedExtension::providerChosen);
    connect(&m_provider, &Provider::changed, this, &RelatedExtension::show);
    connect(&m_provider, &Provider::failed, this, &RelatedExtension::show);
    connect(&m_provider, &Provider::pictureCame, &m_pictures, &Pictures::putOnline);
    connect(&m_pictures, &Pictures::wantedOnline, &m_provider, &Provider::fetchPicture);
    connect(&m_rows, &RelatedRows::chosen, this, &RelatedExtension::play);
    connect(&m_rows, &RelatedRows::againWanted, this, &RelatedExtension::tryAgain);
    connect(&m_rows, &RelatedRows::allWanted, this, [this] {
        fillPage();
        m_mediator->hostInterface()->showSubPage(m_page.get(), m_texts.text("related_videos"));
    });
    for (const RelatedColumn *column : {m_block.get(), m_page.get()})
        connect(column, &RelatedColumn::seenChanged, this, &RelatedExtension::seenChanged);
    m_provider.setAddress(m_setting.address());
}

RelatedExtension::~RelatedExtension()
{
    // Their last changes find nothing to tell any more.
    for (RelatedColumn *column : {m_block.get(), m_page.get()})
        disconnect(column, nullptr, this, nullptr);
}

void RelatedExtension::setActionMediator(ActionMediator *mediator)
{
    m_mediator = mediator;
    m_texts.setLanguage(mediator->textLocale());
}

QGraphicsWidget *RelatedExtension::widget()
{
    show();
    return m_block.get();
}

void RelatedExtension::contentChanged(const ContentRecord &content)
{
    m_pictures.refresh();
    if (m_askedOnline != content.uri()) {
        m_askedOnline.clear();
        m_provider.forget();
    }
    m_finder.look(content);
}

void RelatedExtension::surroundingsChanged()
{
    m_texts.setLanguage(m_mediator->textLocale());
    show();
}

void RelatedExtension::libraryAnswered()
{
    askProvider();
    show();
}

// At once, in the middle of whatever is shown: nothing of the one before stays.
void RelatedExtension::providerChosen()
{
    m_provider.setAddress(m_setting.address());
    m_pictures.forgetOnline();
    m_askedOnline.clear();
    askProvider();
    show();
}

// Once for a video, when the library has said what it is called, or that it cannot.
void RelatedExtension::askProvider()
{
    if (m_finder.state() == RelatedFinder::State::Looking || m_askedOnline == m_mediator->content().uri())
        return;
    m_askedOnline = m_mediator->content().uri();
    m_provider.look(m_finder.video());
}

// The network, or the server, may be back.
void RelatedExtension::askProviderAgain()
{
    if (!m_provider.hasFailed())
        return;
    m_askedOnline.clear();
    askProvider();
}

void RelatedExtension::tryAgain()
{
    askProviderAgain();
    if (m_finder.state() == RelatedFinder::State::Failed)
        m_finder.tryAgain();
    show();
}

RelatedRows::List RelatedExtension::list() const
{
    return {m_finder.state(), entries(), m_provider.hasFailed()};
}

QList<RelatedEntry> RelatedExtension::entries() const
{
    QList<RelatedEntry> entries = m_finder.entries();
    for (const RelatedVideo &video : m_provider.videos()) {
        const auto isSame = [&video](const RelatedEntry &entry) { return entry.video.url == video.url; };
        if (video.url != m_finder.video().url && std::none_of(entries.cbegin(), entries.cend(), isSame))
            entries.append({video, Kinship::Online});
    }
    return entries;
}

void RelatedExtension::show()
{
    m_block->setRows(hasVideo() ? m_rows.few(list()) : QList<TouchRow *>());
    // A hundred rows that nobody may ever want to see.
    m_isPageStale = true;
    if (m_page->isSeen())
        fillPage();
}

void RelatedExtension::fillPage()
{
    if (std::exchange(m_isPageStale, false))
        m_page->setRows(hasVideo() ? m_rows.all(list()) : QList<TouchRow *>());
}

// Not so: it is shown of no video, or of one that nothing is known of.
bool RelatedExtension::hasVideo() const
{
    return !m_finder.video().url.isEmpty();
}

void RelatedExtension::play(const QString &url)
{
    QStringList urls;
    const QList<RelatedEntry> list = entries();
    for (const RelatedEntry &entry : list)
        urls.append(entry.video.url);
    const qsizetype index = urls.indexOf(url);
    if (index >= 0)
        m_mediator->hostInterface()->play(urls, uint(index), u"related-videos"_s);
}

void RelatedExtension::seenChanged()
{
    const bool isSeen = m_block->isSeen() || m_page->isSeen();
    m_finder.setWatched(isSeen);
    // Not in the middle of a change of the scene.
    if (m_page->isSeen() && m_isPageStale)
        QMetaObject::invokeMethod(this, &RelatedExtension::fillPage, Qt::QueuedConnection);
    if (isSeen)
        askProviderAgain();
}
