<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="related_videos">
        <source>Related videos</source>
        <extracomment>Title of the list of videos that belong to the one that is shown</extracomment>
        <translation>Ähnliche Videos</translation>
    </message>
    <message id="related_show_all">
        <source>Show all (%1)</source>
        <extracomment>Opens the whole list; %1 is how many videos are in it</extracomment>
        <translation>Alle anzeigen (%1)</translation>
    </message>
    <message id="related_looking">
        <source>Looking for related videos…</source>
        <extracomment>Stands in place of the list until it is there</extracomment>
        <translation>Ähnliche Videos werden gesucht …</translation>
    </message>
    <message id="related_none">
        <source>No related videos</source>
        <extracomment>Nothing in the library belongs to this video</extracomment>
        <translation>Keine ähnlichen Videos</translation>
    </message>
    <message id="related_failed">
        <source>The video library is not available right now.</source>
        <extracomment>The list of videos on this device does not answer</extracomment>
        <translation>Die Videosammlung ist gerade nicht verfügbar.</translation>
    </message>
    <message id="related_online_failed">
        <source>Online videos are not available right now.</source>
        <extracomment>The server on the network that was set in the settings gave no usable answer</extracomment>
        <translation>Online-Videos sind gerade nicht verfügbar.</translation>
    </message>
    <message id="related_try_again">
        <source>Try again</source>
        <extracomment>Button below the message that something did not work</extracomment>
        <translation>Erneut versuchen</translation>
    </message>
    <message id="related_next">
        <source>Next episodes</source>
        <extracomment>Heading of the episodes of a series that come after this one</extracomment>
        <translation>Nächste Folgen</translation>
    </message>
    <message id="related_previous">
        <source>Previous episodes</source>
        <extracomment>Heading of the episodes of a series that come before this one</extracomment>
        <translation>Vorherige Folgen</translation>
    </message>
    <message id="related_same_day">
        <source>From the same day</source>
        <extracomment>Heading of the videos that were recorded on the same day</extracomment>
        <translation>Vom selben Tag</translation>
    </message>
    <message id="related_same_folder">
        <source>In the same folder</source>
        <extracomment>Heading of the videos that lie in the same folder</extracomment>
        <translation>Im selben Ordner</translation>
    </message>
    <message id="related_similar">
        <source>Similar titles</source>
        <extracomment>Heading of the videos whose titles are alike</extracomment>
        <translation>Ähnliche Titel</translation>
    </message>
    <message id="related_online">
        <source>Online</source>
        <extracomment>Heading of the videos that come from a provider on the network</extracomment>
        <translation>Online</translation>
    </message>
    <message id="related_left">
        <source>%1 left</source>
        <extracomment>Below a video that was not watched to its end; %1 is the time that remains, such as 12:05</extracomment>
        <translation>noch %1</translation>
    </message>
    <message id="related_duration">
        <source>Duration %1</source>
        <extracomment>What a screen reader says of a video's length; %1 is a time such as 12:05</extracomment>
        <translation>Dauer %1</translation>
    </message>
</context>
</TS>
