// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

namespace toolkit {

class ApplicationService;
class ApplicationWindow;

// The application object. Takes care of high-DPI, fonts, the identifier and single-instance registration.
class Application : public QApplication
{
    Q_OBJECT

public:
    Application(int &argc, char **argv, const QString &identifier, ApplicationService *service);
    ~Application() override;

    [[nodiscard]] QString identifier() const { return m_identifier; }
    // A running instance took over: nothing is to be shown, the program ends.
    [[nodiscard]] bool isRedirected() const { return m_redirected; }

    [[nodiscard]] static Application *instance()
    {
        return qobject_cast<Application *>(QCoreApplication::instance());
    }
    // The program's window, focused or not; null before it exists and after it is gone.
    [[nodiscard]] static ApplicationWindow *activeApplicationWindow();

private:
    QString m_identifier;
    bool m_redirected = false;
};

} // namespace toolkit
