# SPDX-License-Identifier: GPL-3.0-or-later
"""The gallery's states of the details page."""
import os
import pathlib
import shutil
import tempfile

from e2e import touring


DESCRIPTION = """[Kestrel Extension]
Name=Films of the same day
Interface=com.harrow.Kestrel.extensions.PlayerInterface/1.0
Library=films.so
"""


class DetailsStates:
    """Of a gallery: what is told of a video, from the list and from the player."""

    DETAILS = ("details", "details-foot", "details-long-title", "details-none", "details-no-extension")

    def details_states(self):
        self.twice("details", self.details_of_the_list, self.DETAILS[:3])
        self.twice("details-none", self.details_of_a_stranger)
        self.twice("details-no-extension", self.details_without_their_extension)

    def plain_cell(self):
        """Of a video with a title of the usual length: in Arabic the long one stands before it."""
        return (2,) if self.rtl else (1,)

    def details_of_the_list(self):
        with self.program_runs():
            listed = self.rest(15)
            shown = self.choose(listed, "details", "the details", self.plain_cell())
            if self.wanted("details"):
                self.keep("details", shown)
            self.screen.key("Next")
            if self.wanted("details-foot"):
                self.keep("details-foot", self.rest())
            self.screen.key("Escape")
            self.changed(shown, "the list again", 3)
            if self.wanted("details-long-title"):
                self.screen.type("1988" if self.rtl else "1987")
                narrowed = self.changed(listed, "the filter")
                self.keep("details-long-title", self.choose(narrowed, "details", "the details", (0, touring.HEADER + 80)))

    def details_of_a_stranger(self):
        """A video that is not in the library, of which the store knows nothing."""
        source = next(pathlib.Path(os.environ["HOME"]).rglob("Autumn*.mp4"))
        folder = pathlib.Path(tempfile.mkdtemp())
        try:
            video = pathlib.Path(shutil.copy(source, folder))
            with self.program_runs(str(video)):
                self.wait("the film", lambda image: self.sun(image) is not None, 30)
                self.screen.key("space")
                shown = self.wait("the controls", self.controls_shown)
                self.screen.key("Tab", "Tab", "Return")  # back, the information
                self.changed(shown, "the details", 3)
                self.keep("details-none", self.rest())
        finally:
            shutil.rmtree(folder)

    def details_without_their_extension(self):
        """Its description is there, its library is not."""
        folder = pathlib.Path(os.environ["HOME"]) / ".local/share/kestrel/extensions"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "video_youtuberelatedextension.desktop").write_text(DESCRIPTION)
        try:
            with self.program_runs():
                self.choose(self.rest(15), "details", "the details", self.plain_cell())
                self.screen.key("End")  # it may stand below the foot of the screen
                self.keep("details-no-extension", self.rest())
        finally:
            shutil.rmtree(folder)
