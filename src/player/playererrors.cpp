// SPDX-License-Identifier: GPL-3.0-or-later
#include "playererrors.h"

PlayerError playerErrorFor(int code, bool callActive)
{
    switch (code) {
    case 300:
    case 303:
        return {"qtn_vide_error_notfound", true};
    case 301:
    case 304:
        return {"qtn_vide_error_connection", false};
    case 302:
        return {"qtn_vide_error_uri", true};
    case 308:
    case 315:
        return {"qtn_vide_error_format", true};
    case 309:
        return {"qtn_vide_error_resolution", true};
    case 310:
        return {"qtn_vide_error_frame", true};
    case 311:
    case 312:
    case 313:
    case 330:
        return {"qtn_vide_error_drm", true};
    case 314:
    case 329:
        return {callActive ? "qtn_vide_error_call" : "qtn_vide_error_audio", false};
    case 317:
    case 318:
    case 319:
        return {"qtn_vide_error_coded", true};
    case 325:
    case 326:
    case 331:
        return {};
    case 332:
        return {"qtn_vide_error_format", false};
    default:
        return {"qtn_vide_error_generic", false};
    }
}
