<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="related_videos">
        <source>Related videos</source>
        <extracomment>Title of the list of videos that belong to the one that is shown</extracomment>
        <translation>مقاطع فيديو ذات صلة</translation>
    </message>
    <message id="related_show_all">
        <source>Show all (%1)</source>
        <extracomment>Opens the whole list; %1 is how many videos are in it</extracomment>
        <translation>عرض الكل (%1)</translation>
    </message>
    <message id="related_looking">
        <source>Looking for related videos…</source>
        <extracomment>Stands in place of the list until it is there</extracomment>
        <translation>جارٍ البحث عن مقاطع فيديو ذات صلة…</translation>
    </message>
    <message id="related_none">
        <source>No related videos</source>
        <extracomment>Nothing in the library belongs to this video</extracomment>
        <translation>لا توجد مقاطع فيديو ذات صلة</translation>
    </message>
    <message id="related_failed">
        <source>The video library is not available right now.</source>
        <extracomment>The list of videos on this device does not answer</extracomment>
        <translation>مكتبة الفيديو غير متاحة حاليًا.</translation>
    </message>
    <message id="related_online_failed">
        <source>Online videos are not available right now.</source>
        <extracomment>The server on the network that was set in the settings gave no usable answer</extracomment>
        <translation>مقاطع الفيديو عبر الإنترنت غير متاحة حاليًا.</translation>
    </message>
    <message id="related_try_again">
        <source>Try again</source>
        <extracomment>Button below the message that something did not work</extracomment>
        <translation>إعادة المحاولة</translation>
    </message>
    <message id="related_next">
        <source>Next episodes</source>
        <extracomment>Heading of the episodes of a series that come after this one</extracomment>
        <translation>الحلقات التالية</translation>
    </message>
    <message id="related_previous">
        <source>Previous episodes</source>
        <extracomment>Heading of the episodes of a series that come before this one</extracomment>
        <translation>الحلقات السابقة</translation>
    </message>
    <message id="related_same_day">
        <source>From the same day</source>
        <extracomment>Heading of the videos that were recorded on the same day</extracomment>
        <translation>من اليوم نفسه</translation>
    </message>
    <message id="related_same_folder">
        <source>In the same folder</source>
        <extracomment>Heading of the videos that lie in the same folder</extracomment>
        <translation>في المجلد نفسه</translation>
    </message>
    <message id="related_similar">
        <source>Similar titles</source>
        <extracomment>Heading of the videos whose titles are alike</extracomment>
        <translation>عناوين مشابهة</translation>
    </message>
    <message id="related_online">
        <source>Online</source>
        <extracomment>Heading of the videos that come from a provider on the network</extracomment>
        <translation>عبر الإنترنت</translation>
    </message>
    <message id="related_left">
        <source>%1 left</source>
        <extracomment>Below a video that was not watched to its end; %1 is the time that remains, such as 12:05</extracomment>
        <translation>متبقٍ %1</translation>
    </message>
    <message id="related_duration">
        <source>Duration %1</source>
        <extracomment>What a screen reader says of a video's length; %1 is a time such as 12:05</extracomment>
        <translation>المدة %1</translation>
    </message>
</context>
</TS>
