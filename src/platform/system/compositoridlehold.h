// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <cstdint>

class QWindow;
struct wl_registry;
struct zwp_idle_inhibit_manager_v1;
struct zwp_idle_inhibitor_v1;

// Tells a Wayland compositor that the screen stays on while the program's window is seen on it. Compositors
// without a desktop around them have no other ear for that. Holds nothing elsewhere.
class CompositorIdleHold : public QObject
{
    Q_OBJECT

public:
    explicit CompositorIdleHold(QObject *parent = nullptr);
    ~CompositorIdleHold() override;

    void setWanted(bool wanted);
    [[nodiscard]] bool isHeld() const { return m_inhibitor != nullptr; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static void announced(void *self, wl_registry *registry, uint32_t name, const char *interface,
                          uint32_t version);
    static void withdrawn(void *self, wl_registry *registry, uint32_t name);
    void take();
    void letGo();

    wl_registry *m_registry = nullptr;
    zwp_idle_inhibit_manager_v1 *m_manager = nullptr; // null: the compositor has none
    zwp_idle_inhibitor_v1 *m_inhibitor = nullptr;
    QPointer<QWindow> m_window; // whose surface is seen
    uint32_t m_surfaceId = 0;
    uint32_t m_managerName = 0;
    bool m_wanted = false;
};
