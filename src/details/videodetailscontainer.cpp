// SPDX-License-Identifier: GPL-3.0-or-later
#include "videodetailscontainer.h"

#include "detailsheading.h"
#include "detailtexts.h"

#include <data/videotimehelper.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/layout.h>

#include <QGuiApplication>

using namespace Qt::Literals::StringLiterals;

namespace {

// Titles, captions and values are text, whatever signs they hold.
toolkit::Label *styled(toolkit::Label *label, const QString &styleName)
{
    label->setTextFormat(Qt::PlainText);
    label->setStyleName(styleName);
    label->setTextElide(true);
    // Names of files have no blanks, and here every letter of them counts.
    label->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed); // no wider apart where there is room
    policy.setHeightForWidth(true);
    label->setSizePolicy(policy);
    return label;
}

toolkit::Label *newLabel(const QString &text)
{
    return styled(new toolkit::Label(text), u"KestrelDetailsPageLabel"_s);
}

toolkit::Label *newHeading(const QString &text, const QString &styleName)
{
    return styled(new DetailsHeading(text), styleName);
}

} // namespace

VideoDetailsContainer::VideoDetailsContainer(QGraphicsItem *parent) : toolkit::Widget(parent)
{
    auto *layout = new toolkit::Layout;
    m_landscape = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    m_landscape->setStyleName(u"KestrelDetailsLabelsPolicy"_s);
    layout->setLandscapePolicy(m_landscape);
    m_portrait = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    m_portrait->setStyleName(u"KestrelDetailsLabelsPolicy"_s);
    layout->setPortraitPolicy(m_portrait);
    setLayout(layout);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

VideoDetailsContainer::~VideoDetailsContainer() = default;

void VideoDetailsContainer::setDetails(const VideoDetails &details)
{
    clear();
    refill(details);
    m_detailLabels = m_labels.size();
}

void VideoDetailsContainer::refill(const VideoDetails &details)
{
    if (details.urn.isEmpty()) {
        add(newLabel(qtTrId("qtn_vide_details_none")));
        return;
    }
    add(captionAndValue(DetailTexts::heading(details), QString()));
    add(singleValue(qtTrId("qtn_vide_propery_length"), VideoTimeHelper::formatDuration(details.duration)));
    add(singleValue(qtTrId("qtn_vide_format"), DetailTexts::format(details)));
    add(singleValue(qtTrId("qtn_vide_size"), DetailTexts::size(details.fileSize)));
    add(twoValues(qtTrId("qtn_vide_added"), DetailTexts::date(details.added),
                  DetailTexts::time(details.added)));
    add(singleValue(qtTrId("qtn_vide_playcount"), DetailTexts::count(details.playCount)));
    if (details.lastAccessed.isValid())
        add(twoValues(qtTrId("qtn_vide_lastplayed"), DetailTexts::date(details.lastAccessed),
                      DetailTexts::time(details.lastAccessed)));
}

void VideoDetailsContainer::setFacts(const QString &heading, const QStringList &facts)
{
    clear(m_detailLabels);
    if (facts.isEmpty())
        return;
    add(newHeading(heading, u"KestrelDetailsPageSection"_s));
    for (const QString &fact : facts)
        add(newLabel(fact));
}

void VideoDetailsContainer::clear(qsizetype keep)
{
    while (m_labels.size() > keep) {
        toolkit::Label *label = m_labels.takeLast();
        m_landscape->removeItem(label);
        m_portrait->removeItem(label);
        delete label;
    }
}

void VideoDetailsContainer::add(toolkit::Label *label)
{
    label->setLayoutDirection(QGuiApplication::layoutDirection());
    label->setParentItem(this);
    m_landscape->addItem(label);
    m_portrait->addItem(label);
    m_labels.append(label);
}

// A value is filled in where it belongs and not looked at again: titles and names may hold "%1".
toolkit::Label *VideoDetailsContainer::singleValue(const QString &caption, const QString &value) const
{
    return newLabel(caption.arg(value));
}

toolkit::Label *VideoDetailsContainer::twoValues(const QString &caption, const QString &first,
                                                 const QString &second) const
{
    return newLabel(caption.arg(first, second));
}

toolkit::Label *VideoDetailsContainer::captionAndValue(const QString &caption, const QString &value) const
{
    const QString text = u"%1 %2"_s.arg(caption, value);
    return value.isEmpty() ? newHeading(text, u"KestrelDetailsPageTitle"_s) : newLabel(text);
}
