// SPDX-License-Identifier: GPL-3.0-or-later
#include "controlthread.h"

namespace {

constexpr unsigned long FarewellLimit = 2000; // ms

} // namespace

ControlThread::ControlThread(const QString &name) : m_thread(new QThread), m_anchor(new QObject)
{
    m_thread->setObjectName(name);
    m_anchor->moveToThread(m_thread);
    QObject::connect(m_thread, &QThread::finished, m_anchor, &QObject::deleteLater);
    m_thread->start();
}

ControlThread::~ControlThread()
{
    finish();
    if (m_thread->wait(FarewellLimit))
        delete m_thread;
    else
        QObject::connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
}

void ControlThread::post(std::function<void()> command)
{
    QMetaObject::invokeMethod(m_anchor, std::move(command), Qt::QueuedConnection);
}

void ControlThread::finish()
{
    if (!std::exchange(m_finishing, true))
        post([thread = m_thread] { thread->quit(); });
}
