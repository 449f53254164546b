// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class SaveAsDialog;

// Offers a copy of a video under a name that the person chooses, in the folder of their videos. Copying is
// the dialog's own business: accepted() of it means that the copy is there.
class SaveAsManager : public QObject
{
    Q_OBJECT

public:
    explicit SaveAsManager(QObject *parent);
    ~SaveAsManager() override;
    // What was left of a copy when the program was killed goes; soon, and without waiting for it.
    static void clearUp();

    [[nodiscard]] QString destination() const { return m_destination; }
    [[nodiscard]] SaveAsDialog *dialog() const { return m_dialog.get(); }

Q_SIGNALS:
    void saveAsDone();

public Q_SLOTS:
    // The path of an address, encoded as it is there; with or without "file://".
    void showSaveAsDialog(QString path);
    // Stays true for 1200 ms after cancelSaveAsDeletion(), so that the owner can ignore taps while it goes.
    bool isDialogOpen();
    // From outside: the dialog goes, and a copy that is under way with it.
    void cancelSaveAsDeletion();
    void saveAsAccepted();
    void saveAsRejected();
    void saveAsDisplayedTimeout();

private:
    QString m_destination;
    std::unique_ptr<SaveAsDialog> m_dialog;
    bool m_dialogOpen = false;
    QTimer m_displayedTimer;
};
