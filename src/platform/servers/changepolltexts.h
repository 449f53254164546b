// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// What the poll asks, in standard SPARQL 1.1 with aggregates; the driver gives the names their namespaces,
// and the position its property. Lower-case hexadecimal digits of the MD5 of an IRI divide the videos into
// 256 groups of equal size, whose content comes down to a number each.
namespace ChangePollTexts {

// clang-format off
// The numbers by which quads name the class and its properties; asked of the library's own store.
inline const QString Numbers = QStringLiteral(
    "SELECT tracker:id(nmm:Video) tracker:id(nie:title) tracker:id(nmm:runTime) tracker:id(nfo:fileName)"
    " tracker:id(rdf:type) {}");

// One row: how many videos, how many of them have a stamp of their record, and the newest.
inline const QString Stamps = QStringLiteral(
    "SELECT (COUNT(?video) AS ?videos) (COUNT(?modified) AS ?stamped) (MAX(?modified) AS ?newest) WHERE {"
    " ?video a nmm:Video . ?video nfo:fileName ?fileName . ?video nie:url ?url ."
    " OPTIONAL { ?video nrl:modified ?modified . } }");

// A row a group: how many videos, and a number that is another when one of them, a title, a position or a file name is.
inline const QString Groups = QStringLiteral(
    "SELECT ?group (COUNT(?video) AS ?videos)"
    " (SUM(<http://www.w3.org/2001/XMLSchema#integer>(CONCAT(\"1\", SUBSTR(REPLACE(MD5(CONCAT("
    "STR(?video), \"/\", COALESCE(STR(?title), \"\"), \"/\", COALESCE(STR(?position), \"\"), \"/\", STR(?fileName)"
    ")), \"[a-f]\", \"\"), 1, 7)))) AS ?content) WHERE {"
    " ?video a nmm:Video . ?video nfo:fileName ?fileName . ?video nie:url ?url ."
    " OPTIONAL { ?video nie:title ?title . }"
    " OPTIONAL { ?video nmm:runTime ?position . }"
    " BIND(SUBSTR(MD5(STR(?video)), 1, 2) AS ?group) } GROUP BY ?group");

// The videos of some groups. Placeholder %1: their names, quoted, with commas between them.
inline const QString Rows = QStringLiteral(
    "SELECT tracker:id(?video) ?title ?position ?fileName (SUBSTR(MD5(STR(?video)), 1, 2) AS ?group) WHERE {"
    " ?video a nmm:Video . ?video nfo:fileName ?fileName . ?video nie:url ?url ."
    " OPTIONAL { ?video nie:title ?title . }"
    " OPTIONAL { ?video nmm:runTime ?position . }"
    " FILTER(SUBSTR(MD5(STR(?video)), 1, 2) IN (%1)) }");
// clang-format on

} // namespace ChangePollTexts
