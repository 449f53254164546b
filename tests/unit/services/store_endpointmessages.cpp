// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointmessages.h"

#include <QTest>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using EndpointMessages::Kind;

namespace {

QByteArray number(qint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

QByteArray counted(const QByteArray &text)
{
    return number(qint32(text.size())) + text;
}

// What a client with 3.8 of the library sends for a text: what it is, the text, the values of its variables.
QByteArray operation(const QByteArray &text, const QByteArray &values = {})
{
    return number(0) + counted(text) + counted(values);
}

// "none" where the client does not send what it should.
QString read(const QByteArray &sent, Kind kind)
{
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0 || ::write(ends[1], sent.constData(), size_t(sent.size())) != sent.size())
        return u"no pipe"_s;
    ::close(ends[1]);
    const auto texts = EndpointMessages::readTexts(ends[0], kind);
    ::close(ends[0]);
    return texts ? texts->join(u'|') : u"none"_s;
}

} // namespace

class StoreEndpointMessagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
};

void StoreEndpointMessagesTest::texts_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<QString>("expected");

    const QByteArray one = "DELETE WHERE { <urn:a> ?p ?o }";
    const QByteArray other = "INSERT DATA { <urn:ä> a nmm:Video }";
    const QString both = QString::fromUtf8(one + '|' + other);
    QTest::newRow("3.4, one") << counted(one) << false << QString::fromUtf8(one);
    QTest::newRow("3.4, two") << number(2) + counted(one) + counted(other) << true << both;
    QTest::newRow("3.8, one") << operation(other) << false << QString::fromUtf8(other);
    QTest::newRow("3.8, two") << number(2) + operation(one) + operation(other) << true << both;
    QTest::newRow("none of several") << number(0) << true << QString();
    QTest::newRow("nothing comes") << QByteArray() << false << u"none"_s;
    QTest::newRow("3.4, cut off") << counted(one).chopped(1) << false << u"none"_s;
    QTest::newRow("3.8, cut off") << operation(one).chopped(1) << false << u"none"_s;
    QTest::newRow("3.8, one of two") << number(2) + operation(one) << true << u"none"_s;
    QTest::newRow("too long") << number(0) + number(0x7fffffff) << false << u"none"_s;
    QTest::newRow("less than nothing") << number(0) + number(-1) << false << u"none"_s;
    // Only texts are looked through for what is refused.
    QTest::newRow("values for variables")
        << operation("DELETE WHERE { ~s ?p ?o }", "{'s': <'urn:a'>}") << false << u"none"_s;
    QTest::newRow("RDF") << number(1) + number(1) + number(0) + number(1) + number(0)
            + counted("<urn:a> a <urn:B> .")
                         << true << u"none"_s;
}

void StoreEndpointMessagesTest::texts()
{
    QFETCH(QByteArray, sent);
    QFETCH(bool, isArray);
    QFETCH(QString, expected);
    QCOMPARE(read(sent, isArray ? Kind::UpdateArray : Kind::Update), expected);
}

QTEST_GUILESS_MAIN(StoreEndpointMessagesTest)
#include "store_endpointmessages.moc"
