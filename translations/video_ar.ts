<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="qtn_vide_collection">
        <source>Videos</source>
        <extracomment>Title of the library page</extracomment>
        <translation>مقاطع الفيديو</translation>
    </message>
    <message id="qtn_vide_collection_empty">
        <source>No videos</source>
        <extracomment>The library has no videos</extracomment>
        <translation>لا توجد مقاطع فيديو</translation>
    </message>
    <message id="qtn_vide_library_unreachable">
        <source>The library cannot be reached</source>
        <extracomment>The server that holds the library does not answer; in a banner, and in place of the list when none was loaded</extracomment>
        <translation>تعذّر الوصول إلى المكتبة</translation>
    </message>
    <message id="qtn_vide_library_trying">
        <source>Trying again…</source>
        <extracomment>Below "The library cannot be reached": nobody has to do anything, the server is asked again and again</extracomment>
        <translation>تتم إعادة المحاولة…</translation>
    </message>
    <message id="qtn_vide_library_waiting">
        <source>Waiting for the library</source>
        <extracomment>For a screen reader: what the turning ring on a page without a list means</extracomment>
        <translation>في انتظار المكتبة</translation>
    </message>
    <message id="qtn_vide_no_results">
        <source>No results</source>
        <extracomment>The filter matches nothing</extracomment>
        <translation>لا توجد نتائج</translation>
    </message>
    <message id="qtn_vide_filter_videos">
        <source>Filter videos</source>
        <extracomment>Prompt of the filter field</extracomment>
        <translation>تصفية مقاطع الفيديو</translation>
    </message>
    <message id="qtn_vide_access_duration">
        <source>Duration %1</source>
        <extracomment>For assistive technology: how long a video of the list is</extracomment>
        <translation>المدة %1</translation>
    </message>
    <message id="qtn_vide_access_remaining">
        <source>%1 left to watch</source>
        <extracomment>For assistive technology: what is left of a video that was watched in part</extracomment>
        <translation>بقي %1</translation>
    </message>
    <message id="qtn_vide_access_title">
        <source>Title</source>
        <extracomment>For assistive technology: the field for the title of a video</extracomment>
        <translation>العنوان</translation>
    </message>
    <message id="qtn_vide_player">
        <source>Video player</source>
        <extracomment>Title of the player page</extracomment>
        <translation>مشغّل الفيديو</translation>
    </message>
    <message id="qtn_vide_mass_storage">
        <source>Videos are not available while the device is connected to a computer as mass storage.</source>
        <extracomment>Shown while the memory card is exported to a computer</extracomment>
        <translation>مقاطع الفيديو غير متاحة أثناء توصيل الجهاز بالكمبيوتر كوحدة تخزين.</translation>
    </message>
    <message id="qtn_vide_scan_progress">
        <source>Reading videos: %1 of %2</source>
        <extracomment>Under the title while the folders are read; %1 files read of %2 seen</extracomment>
        <translation>تتم قراءة مقاطع الفيديو: %1 من %2</translation>
    </message>
    <message id="qtn_vide_power_playing">
        <source>A video is playing</source>
        <extracomment>Why the display stays on; shown by the system</extracomment>
        <translation>يجري تشغيل فيديو</translation>
    </message>
    <message id="qtn_vide_power_saving_place">
        <source>The place in the video is being saved</source>
        <extracomment>Why the device waits before it sleeps; shown by the system</extracomment>
        <translation>يجري حفظ موضع التوقف في الفيديو</translation>
    </message>
    <message id="qtn_vide_error_generic">
        <source>The video cannot be played.</source>
        <extracomment>A failure without a better description</extracomment>
        <translation>يتعذّر تشغيل الفيديو.</translation>
    </message>
    <message id="qtn_vide_error_coded">
        <source>The player failed on this video.</source>
        <extracomment>A failure inside the player</extracomment>
        <translation>حدث خطأ أثناء تشغيل هذا الفيديو.</translation>
    </message>
    <message id="qtn_vide_error_notfound">
        <source>The video was not found.</source>
        <extracomment>There is no file or page at the address</extracomment>
        <translation>لم يُعثر على الفيديو.</translation>
    </message>
    <message id="qtn_vide_error_connection">
        <source>The connection to the video failed.</source>
        <extracomment>The network or the server does not answer</extracomment>
        <translation>فشل الاتصال بالفيديو.</translation>
    </message>
    <message id="qtn_vide_error_uri">
        <source>The address of the video is not valid.</source>
        <extracomment>The address itself makes no sense</extracomment>
        <translation>عنوان الفيديو غير صالح.</translation>
    </message>
    <message id="qtn_vide_error_format">
        <source>This video format is not supported.</source>
        <extracomment>The kind of file cannot be played</extracomment>
        <translation>تنسيق الفيديو هذا غير مدعوم.</translation>
    </message>
    <message id="qtn_vide_error_resolution">
        <source>The resolution of this video is not supported.</source>
        <extracomment>The picture has too many pixels</extracomment>
        <translation>دقة هذا الفيديو غير مدعومة.</translation>
    </message>
    <message id="qtn_vide_error_frame">
        <source>The frame rate of this video is not supported.</source>
        <extracomment>Too many pictures a second</extracomment>
        <translation>معدّل إطارات هذا الفيديو غير مدعوم.</translation>
    </message>
    <message id="qtn_vide_error_drm">
        <source>This video is protected and cannot be played.</source>
        <extracomment>The rights of the video do not allow it</extracomment>
        <translation>هذا الفيديو محمي ولا يمكن تشغيله.</translation>
    </message>
    <message id="qtn_vide_error_audio">
        <source>The sound is in use by another program.</source>
        <extracomment>The sound device is taken</extracomment>
        <translation>الصوت قيد الاستخدام في برنامج آخر.</translation>
    </message>
    <message id="qtn_vide_error_call">
        <source>Videos cannot be played during a call.</source>
        <extracomment>A play request while a phone call is active; banner or notification</extracomment>
        <translation>لا يمكن تشغيل مقاطع الفيديو أثناء المكالمة.</translation>
    </message>
    <message id="qtn_vide_error_delete">
        <source>The video could not be deleted.</source>
        <extracomment>The file is still there; banner</extracomment>
        <translation>تعذّر حذف الفيديو.</translation>
    </message>
    <message id="qtn_vide_delete_query">
        <source>Delete video?</source>
        <extracomment>Title of the question before a video is deleted; the title of the video stands below</extracomment>
        <translation>هل تريد حذف الفيديو؟</translation>
    </message>
    <message id="qtn_vide_rename_title">
        <source>Rename video</source>
        <extracomment>Above the field of the title editor</extracomment>
        <translation>إعادة تسمية الفيديو</translation>
    </message>
    <message id="qtn_vide_propery_length">
        <source>Length: %1</source>
        <extracomment>Details of a video; %1 is a duration such as 1:02:05</extracomment>
        <translation>المدة: %1</translation>
    </message>
    <message id="qtn_vide_format">
        <source>Format: %1</source>
        <extracomment>Details of a video; %1 is a kind of file such as MP4</extracomment>
        <translation>التنسيق: %1</translation>
    </message>
    <message id="qtn_vide_size">
        <source>Size: %1</source>
        <extracomment>Details of a video; %1 is a size with its unit</extracomment>
        <translation>الحجم: %1</translation>
    </message>
    <message id="qtn_vide_added">
        <source>Added: %1 %2</source>
        <extracomment>Details of a video; %1 date, %2 time</extracomment>
        <translation>تاريخ الإضافة: %1 %2</translation>
    </message>
    <message id="qtn_vide_playcount">
        <source>Times played: %1</source>
        <extracomment>Details of a video; %1 says how many times it was played</extracomment>
        <translation>مرات التشغيل: %1</translation>
    </message>
    <message id="qtn_vide_lastplayed">
        <source>Last played: %1 %2</source>
        <extracomment>Details of a video; %1 date, %2 time</extracomment>
        <translation>آخر تشغيل: %1 %2</translation>
    </message>
    <message id="qtn_vide_details_none">
        <source>Details not available</source>
        <extracomment>Page of details of a video of which nothing is known</extracomment>
        <translation>التفاصيل غير متوفرة</translation>
    </message>
    <message id="qtn_vide_facts">
        <source>File</source>
        <extracomment>Heading on the page of details, above what was read in the file of a video</extracomment>
        <translation>الملف</translation>
    </message>
    <message id="qtn_vide_facts_resolution">
        <source>Resolution: %1 × %2</source>
        <extracomment>File of a video; %1 width and %2 height of its picture in pixels</extracomment>
        <translation>الدقة: %1 × %2</translation>
    </message>
    <message id="qtn_vide_facts_framerate">
        <source>Frame rate: %1 fps</source>
        <extracomment>File of a video; %1 pictures a second, such as 29.97</extracomment>
        <translation>معدل الإطارات: %1 إطار/ث</translation>
    </message>
    <message id="qtn_vide_facts_codecs">
        <source>Codecs: %1</source>
        <extracomment>File of a video; %1 names of codecs such as H.264, AAC</extracomment>
        <translation>الترميز: %1</translation>
    </message>
    <message id="qtn_vide_facts_bitrate">
        <source>Bit rate: %1</source>
        <extracomment>File of a video; %1 a bit rate with its unit</extracomment>
        <translation>معدل البت: %1</translation>
    </message>
    <message id="qtn_vide_facts_kilobits">
        <source>%1 kbit/s</source>
        <extracomment>A bit rate; %1 is a whole number</extracomment>
        <translation>%1 كيلوبت/ث</translation>
    </message>
    <message id="qtn_vide_facts_megabits">
        <source>%1 Mbit/s</source>
        <extracomment>A bit rate; %1 is a number with one decimal</extracomment>
        <translation>%1 ميغابت/ث</translation>
    </message>
    <message id="qtn_vide_facts_audio">
        <source>Audio tracks: %1</source>
        <extracomment>File of a video; %1 how many sound tracks it has, perhaps with their languages</extracomment>
        <translation>المسارات الصوتية: %1</translation>
    </message>
    <message id="qtn_vide_facts_subtitles">
        <source>Subtitles: %1</source>
        <extracomment>File of a video; %1 how many subtitle tracks it has, perhaps with their languages</extracomment>
        <translation>الترجمات: %1</translation>
    </message>
    <message id="qtn_vide_facts_languages">
        <source>%1 (%2)</source>
        <extracomment>%1 how many tracks, %2 names of their languages</extracomment>
        <translation>%1 (%2)</translation>
    </message>
    <message id="qtn_vide_facts_folder">
        <source>Folder: %1</source>
        <extracomment>File of a video; %1 is the folder that it lies in</extracomment>
        <translation>المجلد: %1</translation>
    </message>
    <message id="qtn_vide_options_title">
        <source>Playback</source>
        <extracomment>Title of the options of a video that plays</extracomment>
        <translation>التشغيل</translation>
    </message>
    <message id="qtn_vide_options_subtitles">
        <source>Subtitles</source>
        <extracomment>Options of a video: which subtitles are shown</extracomment>
        <translation>الترجمة</translation>
    </message>
    <message id="qtn_vide_options_sound">
        <source>Sound</source>
        <extracomment>Options of a video: which sound track is heard</extracomment>
        <translation>الصوت</translation>
    </message>
    <message id="qtn_vide_options_speed">
        <source>Speed</source>
        <extracomment>Options of a video: how fast it plays</extracomment>
        <translation>السرعة</translation>
    </message>
    <message id="qtn_vide_options_loop">
        <source>Repeat a section</source>
        <extracomment>Options of a video: a section of it that is played again and again</extracomment>
        <translation>تكرار مقطع</translation>
    </message>
    <message id="qtn_vide_options_chapters">
        <source>Chapters</source>
        <extracomment>Options of a video: its chapters</extracomment>
        <translation>الفصول</translation>
    </message>
    <message id="qtn_vide_options_off">
        <source>Off</source>
        <extracomment>No subtitles; no section that is repeated</extracomment>
        <translation>إيقاف</translation>
    </message>
    <message id="qtn_vide_options_track">
        <source>Track %1</source>
        <extracomment>A sound or subtitle track that says neither its language nor a name; %1 is its number</extracomment>
        <translation>المسار %1</translation>
    </message>
    <message id="qtn_vide_options_normal">
        <source>Normal</source>
        <extracomment>The usual speed of a video</extracomment>
        <translation>عادية</translation>
    </message>
    <message id="qtn_vide_options_size">
        <source>Size</source>
        <extracomment>How large subtitles are; a colon and a percentage follow</extracomment>
        <translation>الحجم</translation>
    </message>
    <message id="qtn_vide_options_delay">
        <source>Delay</source>
        <extracomment>How much later than the file says subtitles come; a colon and seconds follow</extracomment>
        <translation>التأخير</translation>
    </message>
    <message id="qtn_vide_options_seconds">
        <source>%1 s</source>
        <extracomment>Seconds, as short as can be; %1 is a number with or without its sign</extracomment>
        <translation>%1 ث</translation>
    </message>
    <message id="qtn_vide_options_smaller">
        <source>Smaller</source>
        <extracomment>For assistive technology: makes subtitles smaller</extracomment>
        <translation>أصغر</translation>
    </message>
    <message id="qtn_vide_options_larger">
        <source>Larger</source>
        <extracomment>For assistive technology: makes subtitles larger</extracomment>
        <translation>أكبر</translation>
    </message>
    <message id="qtn_vide_options_loop_start">
        <source>Start here</source>
        <extracomment>The section that is repeated starts at the present place of the video</extracomment>
        <translation>ابدأ من هنا</translation>
    </message>
    <message id="qtn_vide_options_loop_end">
        <source>End here</source>
        <extracomment>The section that is repeated ends at the present place of the video</extracomment>
        <translation>انتهِ هنا</translation>
    </message>
    <message id="qtn_vide_options_chapter">
        <source>Chapter %1</source>
        <extracomment>A chapter without a title; %1 is its number</extracomment>
        <translation>الفصل %1</translation>
    </message>
    <message id="qtn_vide_options_chosen">
        <source>%1, selected</source>
        <extracomment>For assistive technology: the one of several options that holds; %1 is its text</extracomment>
        <translation>%1، محدد</translation>
    </message>
    <message id="qtn_comm_object_details">
        <source>Details</source>
        <extracomment>Menu</extracomment>
        <translation>التفاصيل</translation>
    </message>
    <message id="qtn_comm_command_share">
        <source>Share</source>
        <extracomment>Menu</extracomment>
        <translation>مشاركة</translation>
    </message>
    <message id="qtn_comm_command_rename">
        <source>Rename</source>
        <extracomment>Menu; the video gets another title, the file keeps its name</extracomment>
        <translation>إعادة التسمية</translation>
    </message>
    <message id="qtn_comm_command_delete">
        <source>Delete</source>
        <extracomment>Menu</extracomment>
        <translation>حذف</translation>
    </message>
    <message id="qtn_comm_content_save_as">
        <source>Save as</source>
        <extracomment>Menu</extracomment>
        <translation>حفظ باسم</translation>
    </message>
    <message id="qtn_comm_command_done">
        <source>Done</source>
        <extracomment>Action key of the on-screen keyboard</extracomment>
        <translation>تم</translation>
    </message>
    <message id="qtn_comm_yes">
        <source>Yes</source>
        <extracomment>Button: the answer to a question, for example whether to delete a video</extracomment>
        <translation>نعم</translation>
    </message>
    <message id="qtn_comm_no">
        <source>No</source>
        <extracomment>Button: the answer to a question, for example whether to delete a video</extracomment>
        <translation>لا</translation>
    </message>
    <message id="qtn_comm_save">
        <source>Save</source>
        <extracomment>Button of a sheet</extracomment>
        <translation>حفظ</translation>
    </message>
    <message id="qtn_comm_cancel">
        <source>Cancel</source>
        <extracomment>Button of a sheet</extracomment>
        <translation>إلغاء</translation>
    </message>
    <message id="qtn_comm_gigabytes">
        <source>%1 GB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 غ.ب</translation>
    </message>
    <message id="qtn_comm_megabytes">
        <source>%1 MB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 م.ب</translation>
    </message>
    <message id="qtn_comm_kilobytes">
        <source>%1 kB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 ك.ب</translation>
    </message>
    <message id="qtn_share_email">
        <source>E-mail</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>البريد الإلكتروني</translation>
    </message>
    <message id="qtn_share_open_with">
        <source>Open with another program</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>فتح باستخدام برنامج آخر</translation>
    </message>
    <message id="qtn_share_bluetooth">
        <source>Bluetooth</source>
        <extracomment>Row of the share sheet, and the title above the devices</extracomment>
        <translation>بلوتوث</translation>
    </message>
    <message id="qtn_share_copy_address">
        <source>Copy address</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>نسخ العنوان</translation>
    </message>
    <message id="qtn_share_items" numerus="yes">
        <source>%Ln item(s)</source>
        <extracomment>Title of the share sheet when several things are shared; %Ln their number</extracomment>
        <translation>
            <numerusform>لا عناصر</numerusform>
            <numerusform>عنصر واحد</numerusform>
            <numerusform>عنصران</numerusform>
            <numerusform>%Ln عناصر</numerusform>
            <numerusform>%Ln عنصرًا</numerusform>
            <numerusform>%Ln عنصر</numerusform>
        </translation>
    </message>
    <message id="qtn_share_no_devices">
        <source>No paired devices. Pair the other device in the system settings first.</source>
        <extracomment>In the share sheet, in place of the devices</extracomment>
        <translation>لا توجد أجهزة مقترنة. أقرن الجهاز الآخر أولاً من إعدادات النظام.</translation>
    </message>
    <message id="qtn_share_copied">
        <source>Address copied</source>
        <extracomment>The address is on the clipboard</extracomment>
        <translation>تم نسخ العنوان</translation>
    </message>
    <message id="qtn_share_sending">
        <source>Sending to %1</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>جارٍ الإرسال إلى ⁨%1⁩</translation>
    </message>
    <message id="qtn_share_sending_percent">
        <source>Sending to %1: %2%</source>
        <extracomment>By Bluetooth; %1 the name of the device, %2 how much is sent</extracomment>
        <translation>جارٍ الإرسال إلى ⁨%1⁩: %2٪</translation>
    </message>
    <message id="qtn_share_sent">
        <source>Sent to %1</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>تم الإرسال إلى ⁨%1⁩</translation>
    </message>
    <message id="qtn_share_stop">
        <source>Stop sending to %1</source>
        <extracomment>Row of the share sheet; %1 is a device</extracomment>
        <translation>إيقاف الإرسال إلى ⁨%1⁩</translation>
    </message>
    <message id="qtn_share_stopped">
        <source>Sending to %1 was stopped</source>
        <extracomment>Banner; %1 is a device</extracomment>
        <translation>تم إيقاف الإرسال إلى ⁨%1⁩</translation>
    </message>
    <message id="qtn_share_error_file">
        <source>The file cannot be read.</source>
        <extracomment>It is not there any more, or may not be read</extracomment>
        <translation>تتعذّر قراءة الملف.</translation>
    </message>
    <message id="qtn_share_error_email">
        <source>The e-mail could not be prepared.</source>
        <extracomment>The mail program could not be started with the video</extracomment>
        <translation>تعذّر إعداد رسالة البريد الإلكتروني.</translation>
    </message>
    <message id="qtn_share_error_open">
        <source>It could not be opened with another program.</source>
        <extracomment>No other program took the video</extracomment>
        <translation>تعذّر الفتح باستخدام برنامج آخر.</translation>
    </message>
    <message id="qtn_share_error_bluetooth">
        <source>It could not be sent to %1.</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>تعذّر الإرسال إلى ⁨%1⁩.</translation>
    </message>
    <message id="qtn_saveas_name">
        <source>Name</source>
        <extracomment>Accessible name and prompt of the field for a file's name, without its extension</extracomment>
        <translation>الاسم</translation>
    </message>
    <message id="qtn_saveas_folder">
        <source>Folder: %1</source>
        <extracomment>Line of the save-as sheet: where the copy will be; %1 the name of a folder</extracomment>
        <translation>المجلد: %1</translation>
    </message>
    <message id="qtn_saveas_size">
        <source>Size: %1</source>
        <extracomment>Line of the save-as sheet; %1 how large the file is, such as 1.2 GB</extracomment>
        <translation>الحجم: %1</translation>
    </message>
    <message id="qtn_saveas_free">
        <source>Free space: %1</source>
        <extracomment>Line of the save-as sheet; %1 how much room there is where the copy will be, such as 12.4 GB</extracomment>
        <translation>المساحة الحرة: %1</translation>
    </message>
    <message id="qtn_saveas_copying">
        <source>Saving “%1”</source>
        <extracomment>Heading of the save-as sheet while it copies; %1 the name of the copy</extracomment>
        <translation>جارٍ حفظ «%1»</translation>
    </message>
    <message id="qtn_saveas_progress">
        <source>%1 of %2</source>
        <extracomment>How far a copy is; %1 how much is copied, %2 how much there is, such as 412 MB and 1.2 GB</extracomment>
        <translation>%1 من %2</translation>
    </message>
    <message id="qtn_saveas_saved">
        <source>Saved in %1</source>
        <extracomment>Banner; the copy is there; %1 the name of its folder</extracomment>
        <translation>تم الحفظ في %1</translation>
    </message>
    <message id="qtn_saveas_replace_title">
        <source>Replace the file?</source>
        <extracomment>Question when something has the name of the copy</extracomment>
        <translation>هل تريد استبدال الملف؟</translation>
    </message>
    <message id="qtn_saveas_replace_text">
        <source>“%1” is already there. It will be deleted if you replace it.</source>
        <extracomment>Text of that question; %1 the name</extracomment>
        <translation>الملف «%1» موجود بالفعل، وسيُحذف إذا استبدلته.</translation>
    </message>
    <message id="qtn_saveas_error_name">
        <source>A name cannot contain “/” or begin with a dot.</source>
        <extracomment>What was typed is no name for a file</extracomment>
        <translation>لا يمكن أن يحتوي الاسم على «/» أو أن يبدأ بنقطة.</translation>
    </message>
    <message id="qtn_saveas_error_long">
        <source>This name is too long.</source>
        <extracomment>What was typed is no name for a file</extracomment>
        <translation>هذا الاسم طويل جدًا.</translation>
    </message>
    <message id="qtn_saveas_error_characters">
        <source>This name is not possible in this folder.</source>
        <extracomment>A memory card does not take every character in a name</extracomment>
        <translation>هذا الاسم غير ممكن في هذا المجلد.</translation>
    </message>
    <message id="qtn_saveas_error_folder_there">
        <source>There is a folder with this name. Choose another name.</source>
        <extracomment>A folder cannot be replaced by a file</extracomment>
        <translation>يوجد مجلد بهذا الاسم. اختر اسمًا آخر.</translation>
    </message>
    <message id="qtn_saveas_error_same">
        <source>The file is already there under this name. Choose another name.</source>
        <extracomment>The file would replace itself</extracomment>
        <translation>الملف موجود هناك بالفعل بهذا الاسم. اختر اسمًا آخر.</translation>
    </message>
    <message id="qtn_saveas_error_space">
        <source>There is not enough free space.</source>
        <extracomment>A copy does not fit</extracomment>
        <translation>لا توجد مساحة حرة كافية.</translation>
    </message>
    <message id="qtn_saveas_error_read_only">
        <source>Files cannot be saved in this folder.</source>
        <extracomment>A folder may not be written to</extracomment>
        <translation>لا يمكن حفظ الملفات في هذا المجلد.</translation>
    </message>
    <message id="qtn_saveas_error_large">
        <source>The file is too large for this storage.</source>
        <extracomment>Some memory cards take no file of more than 4 GB</extracomment>
        <translation>الملف كبير جدًا على وحدة التخزين هذه.</translation>
    </message>
    <message id="qtn_saveas_error_source">
        <source>The file to be copied cannot be read.</source>
        <extracomment>What is to be copied is not there any more, or may not be read</extracomment>
        <translation>لا يمكن قراءة الملف المراد نسخه.</translation>
    </message>
    <message id="qtn_saveas_error_changed">
        <source>The file changed while it was being saved. Try again later.</source>
        <extracomment>Somebody writes to what is copied, such as a download</extracomment>
        <translation>تغيّر الملف أثناء حفظه. حاول مرة أخرى لاحقًا.</translation>
    </message>
    <message id="qtn_saveas_error_destination">
        <source>The folder is not there any more.</source>
        <extracomment>Its memory card was pulled, or it was deleted</extracomment>
        <translation>لم يعد المجلد موجودًا.</translation>
    </message>
    <message id="qtn_saveas_error">
        <source>The file could not be saved.</source>
        <extracomment>A copy failed for a reason without a better description</extracomment>
        <translation>تعذّر حفظ الملف.</translation>
    </message>
    <message id="qtn_extension_description">
        <source>“%1” is not used: its description is faulty.</source>
        <extracomment>An extension, %1, cannot be used: the file that describes it is faulty</extracomment>
        <translation>لا يُستخدم «%1»: ملف وصفه غير صحيح.</translation>
    </message>
    <message id="qtn_extension_missing">
        <source>“%1” is not used: its program file is missing.</source>
        <extracomment>An extension, %1, cannot be used: its program file is not there</extracomment>
        <translation>لا يُستخدم «%1»: ملف برنامجه مفقود.</translation>
    </message>
    <message id="qtn_extension_qt">
        <source>“%1” is not used: it was made for another version of Qt.</source>
        <extracomment>An extension, %1, cannot be used: it was made for another version of Qt, a software library (a name)</extracomment>
        <translation>لا يُستخدم «%1»: فقد أُعدّ لإصدار آخر من Qt.</translation>
    </message>
    <message id="qtn_extension_interface">
        <source>“%1” is not used: it was made for another version of Kestrel.</source>
        <extracomment>An extension, %1, cannot be used: it was made for another version of this program, Kestrel (a name)</extracomment>
        <translation>لا يُستخدم «%1»: فقد أُعدّ لإصدار آخر من Kestrel.</translation>
    </message>
    <message id="qtn_extension_start">
        <source>“%1” is not used: it could not be started.</source>
        <extracomment>An extension, %1, cannot be used: it failed when it was started</extracomment>
        <translation>لا يُستخدم «%1»: تعذّر تشغيله.</translation>
    </message>
    <message id="qtn_extension_empty">
        <source>“%1” has nothing to show.</source>
        <extracomment>An extension, %1, gives nothing that could stand on the page</extracomment>
        <translation>ليس لدى «%1» ما يعرضه.</translation>
    </message>
    <message id="qtn_extension_call">
        <source>“%1” failed and was switched off.</source>
        <extracomment>An extension, %1, failed while it was used, and is not used any more</extracomment>
        <translation>حدث خطأ في «%1» فأُوقف.</translation>
    </message>
    <message id="qtn_extension_nonsense">
        <source>“%1” asked for something that is not possible.</source>
        <extracomment>An extension, %1, wanted something that cannot be done, such as playing no video</extracomment>
        <translation>طلب «%1» شيئًا غير ممكن.</translation>
    </message>
    <message id="qtn_extension_crashed">
        <source>“%1” is not used: Kestrel crashed in it the last time.</source>
        <extracomment>An extension, %1, ended this program the last time, and is not used now</extracomment>
        <translation>لا يُستخدم «%1»: فقد تسبّب في تعطّل Kestrel في المرة السابقة.</translation>
    </message>
    <message id="qtn_extension_hung">
        <source>“%1” is not used: it stopped responding the last time.</source>
        <extracomment>An extension, %1, kept this program busy the last time until it was ended, and is not used now</extracomment>
        <translation>لا يُستخدم «%1»: فقد توقف عن الاستجابة في المرة السابقة.</translation>
    </message>
    <message id="qtn_extension_try_again">
        <source>Try again</source>
        <extracomment>Button: use an extension again that ended this program the last time</extracomment>
        <translation>إعادة المحاولة</translation>
    </message>
</context>
</TS>
