// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Every SPARQL text of the program. The store sees them as they stand, runs of blanks included; the
// connection's driver adapts them to the installed store. Words between underscores and %1 are filled in by
// TrackerInterface.
namespace SparqlTemplates {

// clang-format off
// The whole library, and one video by its IRI. Placeholders %1 (the own equipment) and _FILTER_.
inline const QString Library = QStringLiteral(
    "SELECT     ?_video     ?_title     ?_fileName     ?_duration     ?_playPosition"
    "     ?_mimeType     ?_url     tracker:id(?_video) WHERE {"
    "     ?_video a nmm:Video ."
    "     ?_video nfo:fileName ?_fileName . ?_video nie:url ?_url ."
    "     OPTIONAL {"
    "         ?_video nie:title ?_title ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nfo:duration ?_duration ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nmm:runTime ?_playPosition ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nie:mimeType ?_mimeType ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nfo:equipment ?_equipment ."
    "     }"
    "     FILTER(!bound(?_equipment) || (?_equipment != %1)) ."
    "     _FILTER_ }");

// Stands in for _FILTER_ of the library text. Placeholder _URN_.
inline const QString OneVideoFilter = QStringLiteral(
    "FILTER((?_video = <_URN_>)) .");

// Everything the details page shows. Placeholder _URN_. The order variable is bound nowhere, which keeps the store's order.
inline const QString Details = QStringLiteral(
    "SELECT     ?_video     ?_title     ?_duration     ?_fileSize     ?_playPosition"
    "     ?_contentAccessed     ?_mimeType     ?_url"
    "     tracker:coalesce(?_episodeNumber, ?_synopsis, \"\") AS ?_additionalInfo     ?_added"
    "     ?_playCount     ?_fileName WHERE {"
    "     ?_video a nmm:Video ."
    "     ?_video nfo:fileName ?_fileName . ?_video nie:url ?_url ."
    "     OPTIONAL {"
    "         ?_video nie:title ?_title ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nfo:duration ?_duration ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nfo:fileSize ?_fileSize ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nmm:runTime ?_playPosition ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nie:contentAccessed ?_contentAccessed ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nie:mimeType ?_mimeType ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nmm:episodeNumber ?_episodeNumber ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nmm:synopsis ?_synopsis ."
    "     }"
    "     OPTIONAL {"
    "         ?_video tracker:added ?_added ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nie:usageCounter ?_playCount ."
    "     }"
    "     OPTIONAL {"
    "         ?_video nfo:equipment ?_equipment ."
    "     }"
    "     FILTER((?_video = <_URN_>)) } ORDER BY ?_name");

// One property of one video, always as a quoted literal. Placeholders _URN_, _PROPERTY_, _VALUE_.
inline const QString PropertyUpdate = QStringLiteral(
    "DELETE { <_URN_> _PROPERTY_ ?_insert } WHERE { <_URN_> _PROPERTY_ ?_insert .} INSERT { <_URN_> _PROPERTY_ \"_VALUE_\" }");

// Placeholder _URL_.
inline const QString UrnByUrl = QStringLiteral(
    "SELECT ?_urn WHERE {"
    "  ?_urn a nmm:Video ."
    "  ?_urn nie:url \"_URL_\" ."
    "   OPTIONAL   {"
    "    ?_urn nie:isStoredAs ?_urn ."
    "   } }");

// Placeholders _URN_, _PROPERTY_.
inline const QString Property = QStringLiteral(
    "SELECT ?_prop WHERE {"
    "     <_URN_> _PROPERTY_ ?_prop . }");

// Placeholder _URN_.
inline const QString Title = QStringLiteral(
    "SELECT   ?_title   ?_fileName WHERE {"
    "     <_URN_> nfo:fileName ?_fileName ."
    "       OPTIONAL       {"
    "         <_URN_> nie:title ?_title ."
    "       } }");

// Placeholder _URL_.
inline const QString ByUrl = QStringLiteral(
    "SELECT   ?_urn   ?_title   ?_fileName   ?_duration   ?_playPosition   ?_mimeType   ?_url"
    "   tracker:id(?_urn) WHERE {"
    "   ?_urn a nmm:Video ."
    "   ?_urn nie:url \"_URL_\" ."
    "   ?_urn nfo:fileName ?_fileName ."
    "   OPTIONAL {"
    "       ?_urn nie:title ?_title ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nfo:duration ?_duration ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nmm:runTime ?_playPosition ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nie:mimeType ?_mimeType ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nie:url ?_url ."
    "   } }");

// Rows of some videos by store id. Placeholders %1 (the own equipment) and _ID_.
inline const QString ByIds = QStringLiteral(
    "SELECT   ?_urn   ?_title   ?_fileName   ?_duration   ?_playPosition   ?_mimeType   ?_url"
    "   tracker:id(?_urn) WHERE {"
    "   ?_urn a nmm:Video ."
    "  ?_urn nfo:fileName ?_fileName ."
    "   OPTIONAL {"
    "       ?_urn nie:title ?_title ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nfo:duration ?_duration ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nmm:runTime ?_playPosition ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nie:mimeType ?_mimeType ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nfo:equipment ?_equipment ."
    "   }"
    "   OPTIONAL {"
    "       ?_urn nie:url ?_url ."
    "   }"
    "   OPTIONAL {"
    "       ?_video nfo:equipment ?_equipment ."
    "   } FILTER(!bound(?_equipment) || (?_equipment != %1)) . FILTER(tracker:id(?_urn) IN (_ID_))}");

// The store ids by which change notifications name the class and its properties.
inline const QString Ontology = QStringLiteral(
    "SELECT tracker:id(nmm:Video)                             tracker:id(nie:title)"
    "                             tracker:id(nmm:runTime)"
    "                             tracker:id(nfo:fileName)"
    "                             tracker:id(nfo:equipment)                             {}");

// clang-format on

} // namespace SparqlTemplates
