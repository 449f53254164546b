// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The statements that the application sends, as it sends them but for the values.
namespace storetexts {

inline const QString library = QStringLiteral(
    "SELECT     ?_video     ?_title     ?_fileName     ?_duration     ?_playPosition     ?_mimeType  "
    "   ?_url     tracker:id(?_video) WHERE {     ?_video a nmm:Video .     ?_video nfo:fileName ?_fi"
    "leName . ?_video nie:url ?_url .     OPTIONAL {         ?_video nie:title ?_title .     }     OP"
    "TIONAL {         ?_video nfo:duration ?_duration .     }     OPTIONAL {         ?_video nmm:runT"
    "ime ?_playPosition .     }     OPTIONAL {         ?_video nie:mimeType ?_mimeType .     }     OP"
    "TIONAL {         ?_video nfo:equipment ?_equipment .     }     FILTER(!bound(?_equipment) || (?_"
    "equipment != %1)) .     _FILTER_ }");
inline const QString details = QStringLiteral(
    "SELECT     ?_video     ?_title     ?_duration     ?_fileSize     ?_playPosition     ?_contentAcc"
    "essed     ?_mimeType     ?_url     tracker:coalesce(?_episodeNumber, ?_synopsis, \"\") AS ?_additi"
    "onalInfo     ?_added     ?_playCount     ?_fileName WHERE {     ?_video a nmm:Video .     ?_vide"
    "o nfo:fileName ?_fileName . ?_video nie:url ?_url .     OPTIONAL {         ?_video nie:title ?_t"
    "itle .     }     OPTIONAL {         ?_video nfo:duration ?_duration .     }     OPTIONAL {      "
    "   ?_video nfo:fileSize ?_fileSize .     }     OPTIONAL {         ?_video nmm:runTime ?_playPosi"
    "tion .     }     OPTIONAL {         ?_video nie:contentAccessed ?_contentAccessed .     }     OP"
    "TIONAL {         ?_video nie:mimeType ?_mimeType .     }     OPTIONAL {         ?_video nmm:epis"
    "odeNumber ?_episodeNumber .     }     OPTIONAL {         ?_video nmm:synopsis ?_synopsis .     }"
    "     OPTIONAL {         ?_video tracker:added ?_added .     }     OPTIONAL {         ?_video nie"
    ":usageCounter ?_playCount .     }     OPTIONAL {         ?_video nfo:equipment ?_equipment .    "
    " }     FILTER((?_video = <_URN_>)) } ORDER BY ?_name");
inline const QString setProperty = QStringLiteral(
    "DELETE { <_URN_> _PROPERTY_ ?_insert } WHERE { <_URN_> _PROPERTY_ ?_insert .} INSERT { <_URN_> _"
    "PROPERTY_ \"_VALUE_\" }");
inline const QString iriByUrl = QStringLiteral(
    "SELECT ?_urn WHERE {  ?_urn a nmm:Video .  ?_urn nie:url \"_URL_\" .   OPTIONAL   {    ?_urn nie:i"
    "sStoredAs ?_urn .   } }");
inline const QString property = QStringLiteral("SELECT ?_prop WHERE {     <_URN_> _PROPERTY_ ?_prop . }");
inline const QString title = QStringLiteral(
    "SELECT   ?_title   ?_fileName WHERE {     <_URN_> nfo:fileName ?_fileName .       OPTIONAL      "
    " {         <_URN_> nie:title ?_title .       } }");
inline const QString oneVideo = QStringLiteral("FILTER((?_video = <_URN_>)) .");
inline const QString byUrl = QStringLiteral(
    "SELECT   ?_urn   ?_title   ?_fileName   ?_duration   ?_playPosition   ?_mimeType   ?_url   track"
    "er:id(?_urn) WHERE {   ?_urn a nmm:Video .   ?_urn nie:url \"_URL_\" .   ?_urn nfo:fileName ?_file"
    "Name .   OPTIONAL {       ?_urn nie:title ?_title .   }   OPTIONAL {       ?_urn nfo:duration ?_"
    "duration .   }   OPTIONAL {       ?_urn nmm:runTime ?_playPosition .   }   OPTIONAL {       ?_ur"
    "n nie:mimeType ?_mimeType .   }   OPTIONAL {       ?_urn nie:url ?_url .   } }");
inline const QString byIds = QStringLiteral(
    "SELECT   ?_urn   ?_title   ?_fileName   ?_duration   ?_playPosition   ?_mimeType   ?_url   track"
    "er:id(?_urn) WHERE {   ?_urn a nmm:Video .  ?_urn nfo:fileName ?_fileName .   OPTIONAL {       ?"
    "_urn nie:title ?_title .   }   OPTIONAL {       ?_urn nfo:duration ?_duration .   }   OPTIONAL {"
    "       ?_urn nmm:runTime ?_playPosition .   }   OPTIONAL {       ?_urn nie:mimeType ?_mimeType ."
    "   }   OPTIONAL {       ?_urn nfo:equipment ?_equipment .   }   OPTIONAL {       ?_urn nie:url ?"
    "_url .   }   OPTIONAL {       ?_video nfo:equipment ?_equipment .   } FILTER(!bound(?_equipment)"
    " || (?_equipment != %1)) . FILTER(tracker:id(?_urn) IN (_ID_))}");
inline const QString ontology = QStringLiteral(
    "SELECT tracker:id(nmm:Video)                             tracker:id(nie:title)                  "
    "           tracker:id(nmm:runTime)                             tracker:id(nfo:fileName)         "
    "                    tracker:id(nfo:equipment)                             {}");

} // namespace storetexts
