// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Fixed strings that several modules agree on.

const QString APP_IDENTIFIER = QStringLiteral("video");
const QString PLACEHOLDER_IMAGE_PATH
    = QStringLiteral("/usr/share/themes/base/sorelkit/video/svg/media_server_placeholder_graphics.svg");

const QString URN_PREFIX = QStringLiteral("urn:");
const QString HTTP_PREFIX = QStringLiteral("http:");
const QString RTSP_PREFIX = QStringLiteral("rtsp:");
const QString MMS_PREFIX = QStringLiteral("mms:");
const QString FILE_URL_PREFIX = QStringLiteral("file://");

const QString RENDERER_ID = QStringLiteral("avlo_gst_internal_video_renderer");
const QString PAUSED_THUMBNAIL_PROPERTY = QStringLiteral("paused-thumbnail-uri");
const QString VIDEO_ROUTE_PROPERTY = QStringLiteral("/com/harrow/policy/video_route");
const QString ROUTE_BUILTIN_AND_TVOUT = QStringLiteral("builtinandtvout");
const QString ROUTE_TVOUT = QStringLiteral("tvout");

const QString THUMBNAIL_FLAVOR = QStringLiteral("video-grid");
const QString THUMBNAIL_DIR = QStringLiteral(".thumbnails");
const QString PLACEHOLDER_ICON_ID = QStringLiteral("sorelkit-video-placeholder");
const QString PAUSE_THUMBNAIL_DIR = QStringLiteral(".cache/kestrel");
const QString THUMBNAIL_SUFFIX = QStringLiteral(".jpeg");
const QString PAUSE_THUMBNAIL_SUFFIX = QStringLiteral(".jpeg");

const QString HW_BUILD_MODEL_FULL = QStringLiteral("Q5");
const QString HW_BUILD_MODEL_EARLY = QStringLiteral("Rzw");
const QString HW_BUILD_KEY = QStringLiteral("/component/hw-build");

const QString VIDEO_MIME_PREFIX = QStringLiteral("video/");
const QString OPACITY_PROPERTY = QStringLiteral("opacity");
const QString RELATED_EXTENSION_DESKTOP_FILE = QStringLiteral("video_youtuberelatedextension.desktop");
const QString MYDOCS_URL = QStringLiteral("file:///home/user/MyDocs");
