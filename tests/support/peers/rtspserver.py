# SPDX-License-Identifier: GPL-3.0-or-later
"""An RTSP server on 127.0.0.1, the port chosen by the kernel: rtspserver.py STATE FILE

"/film" is FILE, which can be sought in; "/live" is a test picture that goes on. "/guarded", on a port of its own, is the
latter for the user "guest" with the password "secret"; so is "/digest", where the password is not sent as it is. The
ports are written to "port", "guarded-port" and "digest-port" in the folder STATE before "ready" is said. "drop" ends
every session and closes the servers.
"""

import pathlib
import sys

import gi
gi.require_version('Gst', '1.0')
gi.require_version('GstRtsp', '1.0')
gi.require_version('GstRtspServer', '1.0')
from gi.repository import GLib, Gst, GstRtsp, GstRtspServer  # noqa: E402

Gst.init(None)
LIVE = ('( videotestsrc is-live=true ! video/x-raw,width=160,height=120,framerate=25/1 ! x264enc tune=zerolatency '
        'speed-preset=ultrafast key-int-max=10 ! rtph264pay name=pay0 pt=96 config-interval=1 )')
FILM = f'( filesrc location="{sys.argv[2]}" ! matroskademux ! h264parse ! rtph264pay name=pay0 pt=96 config-interval=1 )'


def factory(launch):
    made = GstRtspServer.RTSPMediaFactory()
    made.set_launch(launch)
    return made


def serve(films):
    made = GstRtspServer.RTSPServer()
    made.set_address('127.0.0.1')
    made.set_service('0')
    for name, film in films.items():
        made.get_mount_points().add_factory(name, film)
    return made




def guarded(name, method):
    film = factory(LIVE)
    allowed = Gst.Structure.new_empty('guest')
    for right in (GstRtspServer.RTSP_PERM_MEDIA_FACTORY_ACCESS, GstRtspServer.RTSP_PERM_MEDIA_FACTORY_CONSTRUCT):
        allowed.set_value(right, True)
    film.add_role_from_structure(allowed)
    guest = GstRtspServer.RTSPToken()
    guest.set_string(GstRtspServer.RTSP_TOKEN_MEDIA_FACTORY_ROLE, 'guest')
    authority = GstRtspServer.RTSPAuth()
    authority.set_supported_methods(method)
    if method == GstRtsp.RTSPAuthMethod.BASIC:
        authority.add_basic(GstRtspServer.RTSPAuth.make_basic('guest', 'secret'), guest)
    else:
        authority.add_digest('guest', 'secret', guest)
    made = serve({name: film})
    made.set_auth(authority)
    return made


servers = {'port': serve({'/film': factory(FILM), '/live': factory(LIVE)}),
           'guarded-port': guarded('/guarded', GstRtsp.RTSPAuthMethod.BASIC),
           'digest-port': guarded('/digest', GstRtsp.RTSPAuthMethod.DIGEST)}
sources = {name: server.attach(None) for name, server in servers.items()}
loop = GLib.MainLoop()


def heard(_channel, condition):
    line = sys.stdin.readline().strip()
    if not line:
        loop.quit()
        return False
    if line == 'drop':
        for name, server in servers.items():
            GLib.source_remove(sources[name])
            server.client_filter(lambda _server, _client: GstRtspServer.RTSPFilterResult.REMOVE)
    print('done', flush=True)
    return True


GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, heard)
for name, server in servers.items():
    pathlib.Path(sys.argv[1], name).write_text(str(server.get_bound_port()))
print('ready', flush=True)
loop.run()
