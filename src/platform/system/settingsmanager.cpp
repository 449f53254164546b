// SPDX-License-Identifier: GPL-3.0-or-later
#include "settingsmanager.h"

#include "gsettingsstore.h"

using namespace Qt::Literals::StringLiterals;

namespace {
SettingsValues read(const GSettingsStore &store)
{
    SettingsValues values;
    values.playbackStartMode = store.intValue("playback-start-mode", values.playbackStartMode);
    values.playbackDisplayMode = store.intValue("playback-display-mode", values.playbackDisplayMode);
    values.onlineContentMode = store.intValue("online-content-mode", values.onlineContentMode);
    values.hideOwnRecordings = store.boolValue("hide-own-recordings", values.hideOwnRecordings);
    values.useDesktopIndex = store.boolValue("use-desktop-index", values.useDesktopIndex);
    values.windowProfile = store.stringValue("window-profile", values.windowProfile);
    return values;
}
} // namespace

class SettingsManager::Private
{
public:
    explicit Private(SettingsManager *manager)
        : store(u"com.harrow.kestrel"_s, GSettingsStore::ownDirectories(),
                [manager, this] { refresh(manager); }),
          values(read(store))
    {
    }

    // A change of several keys at once comes as one signal a key; only what differs is announced.
    void refresh(SettingsManager *manager)
    {
        const SettingsValues now = override ? *override : read(store);
        if (now == values)
            return;
        values = now;
        Q_EMIT manager->settingsModified();
    }

    GSettingsStore store;
    SettingsValues values;
    std::optional<SettingsValues> override;
};

SettingsManager *SettingsManager::instance()
{
    static SettingsManager *const manager = new SettingsManager;
    return manager;
}

SettingsManager::SettingsManager() : d(new Private(this)) { }

SettingsManager::~SettingsManager()
{
    delete d;
}

void SettingsManager::setOverride(const std::optional<SettingsValues> &values)
{
    d->override = values;
    d->refresh(this);
}

int SettingsManager::playbackStartMode() const
{
    return d->values.playbackStartMode;
}

int SettingsManager::playbackDisplayMode() const
{
    return d->values.playbackDisplayMode;
}

int SettingsManager::onlineContentMode() const
{
    return d->values.onlineContentMode;
}

bool SettingsManager::hideOwnRecordings() const
{
    return d->values.hideOwnRecordings;
}

bool SettingsManager::useDesktopIndex() const
{
    return d->values.useDesktopIndex;
}

QString SettingsManager::windowProfile() const
{
    return d->values.windowProfile;
}
