// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostlook.h"

#include <platform/toolkit/theme.h>

#include <QFont>
#include <QGraphicsWidget>
#include <QPalette>

using namespace Qt::Literals::StringLiterals;

namespace {

QPalette hostPalette()
{
    const auto *theme = toolkit::Theme::instance();
    QPalette palette;
    palette.setColor(QPalette::Window, theme->token(u"background"_s));
    palette.setColor(QPalette::Base, theme->token(u"surface1"_s));
    for (const QPalette::ColorRole role : {QPalette::AlternateBase, QPalette::Button})
        palette.setColor(role, theme->token(u"surface2"_s));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, theme->token(u"text1"_s));
    palette.setColor(QPalette::PlaceholderText, theme->token(u"text2"_s));
    palette.setColor(QPalette::Mid, theme->token(u"line"_s));
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::Link})
        palette.setColor(role, theme->accentColor());
    palette.setColor(QPalette::HighlightedText, theme->token(u"background"_s));
    return palette;
}

} // namespace

void keepHostLook(QGraphicsWidget *widget)
{
    const auto apply = [widget] {
        widget->setPalette(hostPalette());
        widget->setFont(toolkit::Theme::instance()->style(u"CommonLabel"_s).font);
    };
    apply();
    QObject::connect(toolkit::Theme::instance(), &toolkit::Theme::themeChangeCompleted, widget, apply);
}
