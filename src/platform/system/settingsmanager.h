// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <optional>

// The values that SettingsManager hands out, with their defaults.
struct SettingsValues
{
    int playbackStartMode = 1;
    int playbackDisplayMode = 1;
    int onlineContentMode = 1;
    bool hideOwnRecordings = false;
    bool useDesktopIndex = true;
    QString windowProfile = QStringLiteral("automatic");

    friend bool operator==(const SettingsValues &, const SettingsValues &) = default;
};

// The user's settings (GSettings schema com.harrow.kestrel, found also when it is not installed), followed
// live.
class SettingsManager : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] static SettingsManager *instance();

    // 0: start from the beginning; otherwise resume. Default 1.
    [[nodiscard]] int playbackStartMode() const;
    // 0: fill; otherwise fit. Default 1.
    [[nodiscard]] int playbackDisplayMode() const;
    // 1: details load extensions. Default 1.
    [[nodiscard]] int onlineContentMode() const;
    [[nodiscard]] bool hideOwnRecordings() const;
    // The store takes from the desktop's file index what that knows already.
    [[nodiscard]] bool useDesktopIndex() const;
    // "automatic", "handset" or "desktop".
    [[nodiscard]] QString windowProfile() const;

    // Tests: these values instead of the user's; nothing restores those. Announced like any change.
    void setOverride(const std::optional<SettingsValues> &values);

    ~SettingsManager() override;

Q_SIGNALS:
    void settingsModified();

private:
    SettingsManager();
    class Private;
    Private *d;
};
