// SPDX-License-Identifier: GPL-3.0-or-later
#include <kestrel/actionmediator.h>
#include <kestrel/extensioninterface.h>

#include <platform/toolkit/locale.h>
#include <platform/toolkit/theme.h>

ActionMediator::ActionMediator(ExtensionInterface *extension, QObject *parent)
    : QObject(parent),
      m_extension(extension)
{
}

ActionMediator::~ActionMediator() = default;

PlayerHostInterface *ActionMediator::hostInterface() const
{
    return m_host;
}

ContentRecord ActionMediator::content() const
{
    return m_content;
}

QLocale ActionMediator::textLocale() const
{
    return toolkit::Locale::ofTexts();
}

bool ActionMediator::reducedMotion() const
{
    return toolkit::Theme::instance()->reducedMotion();
}

void ActionMediator::setHostInterface(PlayerHostInterface *host)
{
    m_host = host;
}

void ActionMediator::setContent(const ContentRecord &content)
{
    m_content = content;
    m_extension->contentChanged(content);
}
