// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class TrackerInterface;

namespace toolkit {
class Sheet;
class TextEdit;
} // namespace toolkit

// Lets the person rename a video: asks the store for its title, shows it in a sheet with one field, and
// writes a title that was changed. Lists learn of it from the store.
class EditManager : public QObject
{
    Q_OBJECT

public:
    explicit EditManager(QObject *parent);
    ~EditManager() override;

    void showEditSheet(const QString &urn);
    // Without saving and without editDone(). A sheet that is about to be shown is not shown any more.
    void closeSheet();
    // Stays for 1200 ms after the sheet was closed, so that the owner can ignore taps while it goes.
    [[nodiscard]] bool isSheetDisplayed() const { return m_sheetDisplayed; }

Q_SIGNALS:
    void editDone();

public Q_SLOTS:
    void sheetRejected();
    void sheetAccepted();
    void titleReady(QString title, int id);
    void editDisplayedTimeout();
    void textChanged();

private:
    void createContent();
    void createHeader();
    void setSaveEnabled(bool enabled);
    void translate();
    void leave();

    TrackerInterface *m_store;
    std::unique_ptr<toolkit::Sheet> m_sheet;
    class Content;
    Content *m_content = nullptr; // the sheet's
    toolkit::TextEdit *m_textEdit = nullptr; // the content's
    QString m_urn;
    QString m_originalTitle;
    int m_queryId = 0;
    bool m_sheetDisplayed = false;
    QTimer m_displayedTimer;
    bool m_saveEnabled = true;
};
