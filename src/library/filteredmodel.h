// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"
#include "titleindex.h"

#include <QMap>
#include <QSortFilterProxyModel>

#include <memory>

namespace toolkit {
class Locale;
}

// Stands between the model of all videos and the list: sorts by title in the user's collation order, keeps
// the rows whose title holds the filter text, and hides videos whose deletion is under way.
class FilteredModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit FilteredModel(QObject *parent = nullptr);
    ~FilteredModel() override;

    // Hides the base's, which keeps the text only as an escaped expression. The owner calls invalidate()
    // afterwards.
    void setFilterFixedString(const QString &text);
    void setSourceModel(QAbstractItemModel *model) override;

    // The record of a row of this proxy; the empty record when there is no such row.
    [[nodiscard]] VideoInfo videoInfo(int row) const;
    // The video at this address is being deleted: it is hidden until clearExcluded().
    void excludeItem(const QString &urn, const QString &url);
    void clearExcluded();

public Q_SLOTS:
    void localeChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    void connectSource(QAbstractItemModel *model);
    void forgetTitles();
    void titlesInserted(const QModelIndex &parent, int first, int last);
    void titlesRemoved(const QModelIndex &parent, int first, int last);
    void titlesChanged(const QModelIndex &from, const QModelIndex &to);
    [[nodiscard]] QStringList readTitles(int first, int last) const;
    // Reads them when they are not known. False without a source.
    bool ensureTitles() const;

    std::unique_ptr<QCollator> m_collator;
    std::unique_ptr<toolkit::Locale> m_locale;
    QMap<QString, QString> m_hiddenItems;
    QString m_collationName;

    QString m_filterText;
    QList<QMetaObject::Connection> m_sourceConnections;
    mutable TitleIndex m_titles;
    mutable bool m_titlesRead = false;
};
