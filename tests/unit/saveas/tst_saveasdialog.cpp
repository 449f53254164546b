// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveasdialogfixture.h"

// The form as a person meets it.
class TestSaveAsDialog : public SaveAsDialogFixture
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextIsThere();
    void asItAppears();
    void theExtensionIsKept();
    void withoutAnExtensionNoneIsShown();
    void theProposedNameIsDecoded();
    void tellsSizeAndRoomInTheReadersDigits();
    void tellsNoRoomThatIsNotKnown();
    void savesUnderTheNameThatWasTyped_data();
    void savesUnderTheNameThatWasTyped();
    void namesThatAreRefused_data();
    void namesThatAreRefused();
    void aNameThatIsTakenIsAskedAbout();
    void aNameThatIsNotGivenUp();
    void theQuestionShowsTheNameAsItIs();
    void theSourceItselfIsNotAskedAbout();
    void dismissedWhileItAsks();
    void aSourceThatIsGone();
    void aFolderThatCannotBeThere();
    void anErrorGoesWithTheNextLetter();
    void saveIsNotHeardTwice();
    void tellsThePathThatIsSaved();
    void appearsAnewEachTime();
    void nothingHappensWithoutAWindow();
    void theExtensionStandsWhereTheNameEnds_data();
    void theExtensionStandsWhereTheNameEnds();
};

void TestSaveAsDialog::everyTextIsThere()
{
    for (const char *id : {"qtn_saveas_name",
                           "qtn_saveas_folder",
                           "qtn_saveas_size",
                           "qtn_saveas_free",
                           "qtn_saveas_copying",
                           "qtn_saveas_progress",
                           "qtn_saveas_saved",
                           "qtn_saveas_replace_title",
                           "qtn_saveas_replace_text",
                           "qtn_saveas_error_name",
                           "qtn_saveas_error_long",
                           "qtn_saveas_error_characters",
                           "qtn_saveas_error_folder_there",
                           "qtn_saveas_error_same",
                           "qtn_saveas_error_space",
                           "qtn_saveas_error_read_only",
                           "qtn_saveas_error_large",
                           "qtn_saveas_error_source",
                           "qtn_saveas_error_changed",
                           "qtn_saveas_error_destination",
                           "qtn_saveas_error"})
        QVERIFY2(qtTrId(id) != QString::fromLatin1(id), id);
}

void TestSaveAsDialog::asItAppears()
{
    open();
    QVERIFY(m_dialog->isOpen());
    QCOMPARE(text(content()->heading()), u"Save as"_s);
    QCOMPARE(content()->field()->text(), u"clip.final"_s);
    QVERIFY(content()->field()->hasFocus());
    QCOMPARE(content()->field()->selectedText(), u"clip.final"_s);
    QCOMPARE(content()->field()->accessibleName(), u"Name"_s);
    QCOMPARE(content()->extensionLabel()->accessibleName(), u".mp4"_s);
    QCOMPARE(text(content()->folderLabel()), u"Folder: Videos"_s);
    QCOMPARE(text(content()->errorLabel()), QString());
    QVERIFY(!content()->progressBar()->isVisible());
    QCOMPARE(cancelButton()->text(), u"Cancel"_s);
    QCOMPARE(saveButton()->text(), u"Save"_s);
    QVERIFY(saveButton()->isEnabled());
    QCoreApplication::sendPostedEvents();
    const toolkit::Label *extension = content()->extensionLabel();
    const QRectF field = content()->field()->mapRectToScene(content()->field()->rect());
    const QRectF beside = extension->mapRectToScene(extension->rect());
    QVERIFY(field.height() >= 60);
    QVERIFY(beside.left() >= field.right());
    QVERIFY(beside.right() <= m_window->logicalSize().width());
}

void TestSaveAsDialog::theExtensionIsKept()
{
    open();
    QTest::keyClicks(m_window.get(), u"holiday.avi"_s); // the proposed name is selected
    saveButton()->click();
    QTRY_COMPARE(saved(), QStringList{u"holiday.avi.mp4"_s});
}

void TestSaveAsDialog::withoutAnExtensionNoneIsShown()
{
    m_dialog->setDefaultFileName(u"clip"_s);
    m_dialog->setDefaultExtension({});
    open();
    QVERIFY(!content()->extensionLabel()->isVisible());
    saveButton()->click();
    QTRY_COMPARE(saved(), QStringList{u"clip"_s});
}

void TestSaveAsDialog::theProposedNameIsDecoded()
{
    QVERIFY(make(u"a b%20c#é.mp4"_s, "another film"));
    m_dialog->setSourcePath(m_root->path() + u"/a%20b%2520c%23%C3%A9.mp4"_s);
    m_dialog->setDefaultFileName(u"a%20b%2520c%23%C3%A9"_s);
    open();
    QCOMPARE(content()->field()->text(), u"a b%20c#é"_s);
    saveButton()->click();
    QTRY_COMPARE(saved(), QStringList{u"a b%20c#é.mp4"_s});
    QCOMPARE(read(u"Videos/a b%20c#é.mp4"_s), QByteArray("another film"));
}

void TestSaveAsDialog::tellsSizeAndRoomInTheReadersDigits()
{
    QVERIFY(QFile::resize(m_root->filePath(u"clip.final.mp4"_s), 1234567));
    open();
    QTRY_COMPARE(text(content()->sizeLabel()), u"Size: 1.2 MB"_s);
    QVERIFY2(text(content()->freeLabel()).startsWith("Free space: "_L1),
             qPrintable(text(content()->freeLabel())));
    m_dialog->reject();
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    open();
    QTRY_VERIFY(text(content()->sizeLabel()).contains(u"١٫٢"_s));
    m_dialog->reject();
    QLocale::setDefault(QLocale(QLocale::German));
    open();
    QTRY_COMPARE(text(content()->sizeLabel()), u"Size: 1,2 MB"_s);
}

void TestSaveAsDialog::tellsNoRoomThatIsNotKnown()
{
    m_dialog->setSourcePath(m_root->filePath(u"gone.mp4"_s));
    open();
    QTRY_VERIFY(!text(content()->freeLabel()).isEmpty());
    QCOMPARE(text(content()->sizeLabel()), QString());
    SpaceQuery query;
    QSignalSpy answered(&query, &SpaceQuery::answered);
    query.ask(QFile::encodeName(m_root->filePath(u"clip.final.mp4"_s)), "/");
    query.ask(QFile::encodeName(m_root->filePath(u"gone.mp4"_s)), "relative"); // in place of the first
    QVERIFY(answered.wait(TestPatience));
    QCOMPARE(answered.first(), (QList<QVariant>{qint64(-1), qint64(-1)}));
    content()->setSpace(-1, -1);
    QCOMPARE(text(content()->freeLabel()), QString());
}

void TestSaveAsDialog::savesUnderTheNameThatWasTyped_data()
{
    QTest::addColumn<bool>("byReturn");
    QTest::newRow("save") << false;
    QTest::newRow("return") << true;
}

void TestSaveAsDialog::savesUnderTheNameThatWasTyped()
{
    QFETCH(bool, byReturn);
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    QSignalSpy rejected(m_dialog.get(), &SaveAsDialog::rejected);
    open();
    QTest::keyClicks(m_window.get(), u"  holiday "_s);
    if (byReturn)
        key(Qt::Key_Return);
    else
        saveButton()->click();
    QVERIFY(m_dialog->isCopying());
    QCOMPARE(accepted.size(), 0); // not before it is there
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(saved(), QStringList{u"holiday.mp4"_s});
    QCOMPARE(read(u"Videos/holiday.mp4"_s), QByteArray("film"));
    QVERIFY(!m_dialog->isDisplayed());
    QCOMPARE(rejected.size(), 0);
    QCOMPARE(banners(), QStringList{u"Saved in Videos"_s});
}

void TestSaveAsDialog::namesThatAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");
    const QString characters = u"A name cannot contain “/” or begin with a dot."_s;
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("blanks") << u"   "_s << QString();
    QTest::newRow("dots") << u"..."_s << characters;
    QTest::newRow("hidden") << u".clip"_s << characters;
    QTest::newRow("a folder") << u"a/b"_s << characters;
    QTest::newRow("another folder") << u"../clip"_s << characters;
    QTest::newRow("too long") << QString(300, u'x') << u"This name is too long."_s;
}

void TestSaveAsDialog::namesThatAreRefused()
{
    QFETCH(QString, name);
    open();
    type(name);
    QTEST(text(content()->errorLabel()), "error");
    QVERIFY(!saveButton()->isEnabled());
    QCOMPARE(content()->field()->inputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"enabled"_s),
             QVariant(false));
    key(Qt::Key_Return);
    QVERIFY(!m_dialog->isCopying());
    QVERIFY(m_dialog->isOpen());
    type(u"clip"_s);
    QVERIFY(saveButton()->isEnabled());
    QCOMPARE(text(content()->errorLabel()), QString());
}

void TestSaveAsDialog::aNameThatIsTakenIsAskedAbout()
{
    QVERIFY(make(u"Videos/clip.final.mp4"_s, "theirs"));
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    open();
    saveButton()->click();
    QTRY_VERIFY(isAsking());
    QVERIFY(!m_dialog->isCopying());
    QVERIFY(content()->field()->isVisible());
    QCOMPARE(m_dialog->question()->title(), u"Replace the file?"_s);
    QCOMPARE(read(u"Videos/clip.final.mp4"_s), QByteArray("theirs"));
    m_dialog->question()->button(QueryDialog::Yes)->click();
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(saved(), QStringList{u"clip.final.mp4"_s});
    QCOMPARE(read(u"Videos/clip.final.mp4"_s), QByteArray("film"));
}

void TestSaveAsDialog::aNameThatIsNotGivenUp()
{
    QVERIFY(make(u"Videos/clip.final.mp4"_s, "theirs"));
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    open();
    saveButton()->click();
    QTRY_VERIFY(isAsking());
    m_dialog->save(); // not while it asks
    QVERIFY(!m_dialog->isCopying());
    key(Qt::Key_Return); // the question is about losing something: No
    QTRY_VERIFY(!isAsking());
    QVERIFY(m_dialog->isOpen());
    QVERIFY(saveButton()->isEnabled());
    QVERIFY(content()->field()->hasFocus());
    QCOMPARE(read(u"Videos/clip.final.mp4"_s), QByteArray("theirs"));
    type(u"clip 2"_s);
    saveButton()->click();
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(saved(), (QStringList{u"clip 2.mp4"_s, u"clip.final.mp4"_s}));
}

void TestSaveAsDialog::theQuestionShowsTheNameAsItIs()
{
    QVERIFY(make(u"Videos/<b>&amp;%1.mp4"_s));
    open();
    type(u"<b>&amp;%1"_s);
    saveButton()->click();
    QTRY_VERIFY(isAsking());
    QVERIFY2(m_dialog->question()->text().contains(u"&lt;b&gt;&amp;amp;%1.mp4"_s),
             qPrintable(m_dialog->question()->text()));
}

void TestSaveAsDialog::theSourceItselfIsNotAskedAbout()
{
    m_dialog->setDestinationPath(m_root->path());
    open();
    saveButton()->click();
    QTRY_COMPARE(text(content()->errorLabel()),
                 u"The file is already there under this name. Choose another name."_s);
    QVERIFY(!isAsking());
    QCOMPARE(read(u"clip.final.mp4"_s), QByteArray("film"));
    QVERIFY(saveButton()->isEnabled());
}

void TestSaveAsDialog::dismissedWhileItAsks()
{
    QVERIFY(make(u"Videos/clip.final.mp4"_s, "theirs"));
    QSignalSpy rejected(m_dialog.get(), &SaveAsDialog::rejected);
    open();
    saveButton()->click();
    QTRY_VERIFY(isAsking());
    m_dialog->dismiss();
    QVERIFY(!isAsking());
    QCOMPARE(rejected.size(), 0);
    QTRY_VERIFY(!m_window->sceneManager()->isBlocked());
    QCOMPARE(read(u"Videos/clip.final.mp4"_s), QByteArray("theirs"));
}

void TestSaveAsDialog::aSourceThatIsGone()
{
    open();
    QVERIFY(QFile::remove(m_root->filePath(u"clip.final.mp4"_s)));
    saveButton()->click();
    QTRY_COMPARE(text(content()->errorLabel()), u"The file to be copied cannot be read."_s);
    QVERIFY(m_dialog->isOpen());
    QVERIFY(content()->field()->isVisible());
    QVERIFY(saveButton()->isEnabled()); // it may come back
    QVERIFY(make(u"clip.final.mp4"_s));
    saveButton()->click();
    QTRY_COMPARE(saved(), QStringList{u"clip.final.mp4"_s});
}

void TestSaveAsDialog::aFolderThatCannotBeThere()
{
    m_dialog->setDestinationPath(m_root->filePath(u"card/Videos"_s));
    open();
    saveButton()->click();
    QTRY_COMPARE(text(content()->errorLabel()), u"The folder is not there any more."_s);
    QVERIFY(!QFile::exists(m_root->filePath(u"card"_s)));
}

void TestSaveAsDialog::anErrorGoesWithTheNextLetter()
{
    QVERIFY(QDir(m_root->path()).mkpath(u"Videos/clip.final.mp4"_s));
    open();
    saveButton()->click();
    QTRY_COMPARE(text(content()->errorLabel()), u"There is a folder with this name. Choose another name."_s);
    QTest::keyClicks(m_window.get(), u"x"_s);
    QCOMPARE(text(content()->errorLabel()), QString());
}

void TestSaveAsDialog::saveIsNotHeardTwice()
{
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    QSignalSpy told(m_dialog.get(), &SaveAsDialog::saveFileAs);
    m_dialog->save(); // it is not even there
    open();
    key(Qt::Key_Return);
    key(Qt::Key_Return);
    m_dialog->save();
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(told.size(), 1);
    QCOMPARE(saved(), QStringList{u"clip.final.mp4"_s});
}

void TestSaveAsDialog::tellsThePathThatIsSaved()
{
    QSignalSpy told(m_dialog.get(), &SaveAsDialog::saveFileAs);
    open();
    type(u"a b"_s);
    saveButton()->click();
    QCOMPARE(told.first().first().toString(), m_root->filePath(u"Videos/a b.mp4"_s));
}

void TestSaveAsDialog::appearsAnewEachTime()
{
    makeLarge();
    open();
    type(u"other"_s);
    saveButton()->click();
    QTRY_VERIFY(content()->progressBar()->isVisible());
    cancelButton()->click();
    open();
    QVERIFY(m_dialog->isOpen());
    QVERIFY(!content()->progressBar()->isVisible());
    QCOMPARE(content()->field()->text(), u"clip.final"_s);
    QVERIFY(saveButton()->isEnabled());
    QCOMPARE(text(content()->heading()), u"Save as"_s);
}

void TestSaveAsDialog::nothingHappensWithoutAWindow()
{
    m_dialog->setAutomaticCopy(true);
    m_dialog->appear(nullptr);
    QVERIFY(!m_dialog->isDisplayed());
    QVERIFY(!m_dialog->isCopying());
}

void TestSaveAsDialog::theExtensionStandsWhereTheNameEnds_data()
{
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("atTheRight");
    for (const bool mirrored : {false, true}) {
        const QString page = mirrored ? u"right to left"_s : u"left to right"_s;
        QTest::addRow("Latin, %s", qPrintable(page)) << mirrored << u"clip"_s << true;
        QTest::addRow("Arabic, %s", qPrintable(page)) << mirrored << u"رحلة"_s << false;
        QTest::addRow("a number, %s", qPrintable(page)) << mirrored << u"1988"_s << !mirrored;
        QTest::addRow("none, %s", qPrintable(page)) << mirrored << u""_s << !mirrored;
    }
}

void TestSaveAsDialog::theExtensionStandsWhereTheNameEnds()
{
    QFETCH(bool, mirrored);
    QFETCH(QString, name);
    QFETCH(bool, atTheRight);
    QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
    open();
    content()->field()->setText(name);
    const auto place = [](const toolkit::Widget *widget) { return widget->mapRectToScene(widget->rect()); };
    const toolkit::Label *extension = content()->extensionLabel();
    const toolkit::TextEdit *field = content()->field();
    if (atTheRight)
        QTRY_VERIFY(place(extension).left() >= place(field).right());
    else
        QTRY_VERIFY(place(extension).right() <= place(field).left());
    // All else is as on the page.
    QCOMPARE(field->layoutDirection(), content()->layoutDirection());
    QCOMPARE(content()->heading()->layoutDirection(), mirrored ? Qt::RightToLeft : Qt::LeftToRight);
}

QTEST_MAIN(TestSaveAsDialog)
#include "tst_saveasdialog.moc"
