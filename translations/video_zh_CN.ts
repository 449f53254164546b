<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="qtn_vide_collection">
        <source>Videos</source>
        <extracomment>Title of the library page</extracomment>
        <translation>视频</translation>
    </message>
    <message id="qtn_vide_collection_empty">
        <source>No videos</source>
        <extracomment>The library has no videos</extracomment>
        <translation>没有视频</translation>
    </message>
    <message id="qtn_vide_library_unreachable">
        <source>The library cannot be reached</source>
        <extracomment>The server that holds the library does not answer; in a banner, and in place of the list when none was loaded</extracomment>
        <translation>无法连接到媒体库</translation>
    </message>
    <message id="qtn_vide_library_trying">
        <source>Trying again…</source>
        <extracomment>Below "The library cannot be reached": nobody has to do anything, the server is asked again and again</extracomment>
        <translation>正在重试…</translation>
    </message>
    <message id="qtn_vide_library_waiting">
        <source>Waiting for the library</source>
        <extracomment>For a screen reader: what the turning ring on a page without a list means</extracomment>
        <translation>正在等待媒体库</translation>
    </message>
    <message id="qtn_vide_no_results">
        <source>No results</source>
        <extracomment>The filter matches nothing</extracomment>
        <translation>无结果</translation>
    </message>
    <message id="qtn_vide_filter_videos">
        <source>Filter videos</source>
        <extracomment>Prompt of the filter field</extracomment>
        <translation>筛选视频</translation>
    </message>
    <message id="qtn_vide_access_duration">
        <source>Duration %1</source>
        <extracomment>For assistive technology: how long a video of the list is</extracomment>
        <translation>时长 %1</translation>
    </message>
    <message id="qtn_vide_access_remaining">
        <source>%1 left to watch</source>
        <extracomment>For assistive technology: what is left of a video that was watched in part</extracomment>
        <translation>剩余 %1</translation>
    </message>
    <message id="qtn_vide_access_title">
        <source>Title</source>
        <extracomment>For assistive technology: the field for the title of a video</extracomment>
        <translation>标题</translation>
    </message>
    <message id="qtn_vide_player">
        <source>Video player</source>
        <extracomment>Title of the player page</extracomment>
        <translation>视频播放器</translation>
    </message>
    <message id="qtn_vide_mass_storage">
        <source>Videos are not available while the device is connected to a computer as mass storage.</source>
        <extracomment>Shown while the memory card is exported to a computer</extracomment>
        <translation>设备以大容量存储模式连接到电脑时，视频不可用。</translation>
    </message>
    <message id="qtn_vide_scan_progress">
        <source>Reading videos: %1 of %2</source>
        <extracomment>Under the title while the folders are read; %1 files read of %2 seen</extracomment>
        <translation>正在读取视频：%1/%2</translation>
    </message>
    <message id="qtn_vide_power_playing">
        <source>A video is playing</source>
        <extracomment>Why the display stays on; shown by the system</extracomment>
        <translation>正在播放视频</translation>
    </message>
    <message id="qtn_vide_power_saving_place">
        <source>The place in the video is being saved</source>
        <extracomment>Why the device waits before it sleeps; shown by the system</extracomment>
        <translation>正在保存视频播放位置</translation>
    </message>
    <message id="qtn_vide_error_generic">
        <source>The video cannot be played.</source>
        <extracomment>A failure without a better description</extracomment>
        <translation>无法播放视频。</translation>
    </message>
    <message id="qtn_vide_error_coded">
        <source>The player failed on this video.</source>
        <extracomment>A failure inside the player</extracomment>
        <translation>播放此视频时出错。</translation>
    </message>
    <message id="qtn_vide_error_notfound">
        <source>The video was not found.</source>
        <extracomment>There is no file or page at the address</extracomment>
        <translation>找不到视频。</translation>
    </message>
    <message id="qtn_vide_error_connection">
        <source>The connection to the video failed.</source>
        <extracomment>The network or the server does not answer</extracomment>
        <translation>无法连接到视频。</translation>
    </message>
    <message id="qtn_vide_error_uri">
        <source>The address of the video is not valid.</source>
        <extracomment>The address itself makes no sense</extracomment>
        <translation>视频地址无效。</translation>
    </message>
    <message id="qtn_vide_error_format">
        <source>This video format is not supported.</source>
        <extracomment>The kind of file cannot be played</extracomment>
        <translation>不支持此视频格式。</translation>
    </message>
    <message id="qtn_vide_error_resolution">
        <source>The resolution of this video is not supported.</source>
        <extracomment>The picture has too many pixels</extracomment>
        <translation>不支持此视频的分辨率。</translation>
    </message>
    <message id="qtn_vide_error_frame">
        <source>The frame rate of this video is not supported.</source>
        <extracomment>Too many pictures a second</extracomment>
        <translation>不支持此视频的帧率。</translation>
    </message>
    <message id="qtn_vide_error_drm">
        <source>This video is protected and cannot be played.</source>
        <extracomment>The rights of the video do not allow it</extracomment>
        <translation>此视频受保护，无法播放。</translation>
    </message>
    <message id="qtn_vide_error_audio">
        <source>The sound is in use by another program.</source>
        <extracomment>The sound device is taken</extracomment>
        <translation>声音正被其他应用占用。</translation>
    </message>
    <message id="qtn_vide_error_call">
        <source>Videos cannot be played during a call.</source>
        <extracomment>A play request while a phone call is active; banner or notification</extracomment>
        <translation>通话期间无法播放视频。</translation>
    </message>
    <message id="qtn_vide_error_delete">
        <source>The video could not be deleted.</source>
        <extracomment>The file is still there; banner</extracomment>
        <translation>无法删除视频。</translation>
    </message>
    <message id="qtn_vide_delete_query">
        <source>Delete video?</source>
        <extracomment>Title of the question before a video is deleted; the title of the video stands below</extracomment>
        <translation>删除视频？</translation>
    </message>
    <message id="qtn_vide_rename_title">
        <source>Rename video</source>
        <extracomment>Above the field of the title editor</extracomment>
        <translation>重命名视频</translation>
    </message>
    <message id="qtn_vide_propery_length">
        <source>Length: %1</source>
        <extracomment>Details of a video; %1 is a duration such as 1:02:05</extracomment>
        <translation>时长：%1</translation>
    </message>
    <message id="qtn_vide_format">
        <source>Format: %1</source>
        <extracomment>Details of a video; %1 is a kind of file such as MP4</extracomment>
        <translation>格式：%1</translation>
    </message>
    <message id="qtn_vide_size">
        <source>Size: %1</source>
        <extracomment>Details of a video; %1 is a size with its unit</extracomment>
        <translation>大小：%1</translation>
    </message>
    <message id="qtn_vide_added">
        <source>Added: %1 %2</source>
        <extracomment>Details of a video; %1 date, %2 time</extracomment>
        <translation>添加时间：%1 %2</translation>
    </message>
    <message id="qtn_vide_playcount">
        <source>Times played: %1</source>
        <extracomment>Details of a video; %1 says how many times it was played</extracomment>
        <translation>播放次数：%1</translation>
    </message>
    <message id="qtn_vide_lastplayed">
        <source>Last played: %1 %2</source>
        <extracomment>Details of a video; %1 date, %2 time</extracomment>
        <translation>上次播放：%1 %2</translation>
    </message>
    <message id="qtn_vide_details_none">
        <source>Details not available</source>
        <extracomment>Page of details of a video of which nothing is known</extracomment>
        <translation>没有详细信息</translation>
    </message>
    <message id="qtn_vide_facts">
        <source>File</source>
        <extracomment>Heading on the page of details, above what was read in the file of a video</extracomment>
        <translation>文件</translation>
    </message>
    <message id="qtn_vide_facts_resolution">
        <source>Resolution: %1 × %2</source>
        <extracomment>File of a video; %1 width and %2 height of its picture in pixels</extracomment>
        <translation>分辨率：%1 × %2</translation>
    </message>
    <message id="qtn_vide_facts_framerate">
        <source>Frame rate: %1 fps</source>
        <extracomment>File of a video; %1 pictures a second, such as 29.97</extracomment>
        <translation>帧率：%1 帧/秒</translation>
    </message>
    <message id="qtn_vide_facts_codecs">
        <source>Codecs: %1</source>
        <extracomment>File of a video; %1 names of codecs such as H.264, AAC</extracomment>
        <translation>编解码器：%1</translation>
    </message>
    <message id="qtn_vide_facts_bitrate">
        <source>Bit rate: %1</source>
        <extracomment>File of a video; %1 a bit rate with its unit</extracomment>
        <translation>码率：%1</translation>
    </message>
    <message id="qtn_vide_facts_kilobits">
        <source>%1 kbit/s</source>
        <extracomment>A bit rate; %1 is a whole number</extracomment>
        <translation>%1 kbps</translation>
    </message>
    <message id="qtn_vide_facts_megabits">
        <source>%1 Mbit/s</source>
        <extracomment>A bit rate; %1 is a number with one decimal</extracomment>
        <translation>%1 Mbps</translation>
    </message>
    <message id="qtn_vide_facts_audio">
        <source>Audio tracks: %1</source>
        <extracomment>File of a video; %1 how many sound tracks it has, perhaps with their languages</extracomment>
        <translation>音轨：%1</translation>
    </message>
    <message id="qtn_vide_facts_subtitles">
        <source>Subtitles: %1</source>
        <extracomment>File of a video; %1 how many subtitle tracks it has, perhaps with their languages</extracomment>
        <translation>字幕：%1</translation>
    </message>
    <message id="qtn_vide_facts_languages">
        <source>%1 (%2)</source>
        <extracomment>%1 how many tracks, %2 names of their languages</extracomment>
        <translation>%1（%2）</translation>
    </message>
    <message id="qtn_vide_facts_folder">
        <source>Folder: %1</source>
        <extracomment>File of a video; %1 is the folder that it lies in</extracomment>
        <translation>文件夹：%1</translation>
    </message>
    <message id="qtn_vide_options_title">
        <source>Playback</source>
        <extracomment>Title of the options of a video that plays</extracomment>
        <translation>播放</translation>
    </message>
    <message id="qtn_vide_options_subtitles">
        <source>Subtitles</source>
        <extracomment>Options of a video: which subtitles are shown</extracomment>
        <translation>字幕</translation>
    </message>
    <message id="qtn_vide_options_sound">
        <source>Sound</source>
        <extracomment>Options of a video: which sound track is heard</extracomment>
        <translation>音轨</translation>
    </message>
    <message id="qtn_vide_options_speed">
        <source>Speed</source>
        <extracomment>Options of a video: how fast it plays</extracomment>
        <translation>速度</translation>
    </message>
    <message id="qtn_vide_options_loop">
        <source>Repeat a section</source>
        <extracomment>Options of a video: a section of it that is played again and again</extracomment>
        <translation>区间循环</translation>
    </message>
    <message id="qtn_vide_options_chapters">
        <source>Chapters</source>
        <extracomment>Options of a video: its chapters</extracomment>
        <translation>章节</translation>
    </message>
    <message id="qtn_vide_options_off">
        <source>Off</source>
        <extracomment>No subtitles; no section that is repeated</extracomment>
        <translation>关闭</translation>
    </message>
    <message id="qtn_vide_options_track">
        <source>Track %1</source>
        <extracomment>A sound or subtitle track that says neither its language nor a name; %1 is its number</extracomment>
        <translation>轨道 %1</translation>
    </message>
    <message id="qtn_vide_options_normal">
        <source>Normal</source>
        <extracomment>The usual speed of a video</extracomment>
        <translation>正常</translation>
    </message>
    <message id="qtn_vide_options_size">
        <source>Size</source>
        <extracomment>How large subtitles are; a colon and a percentage follow</extracomment>
        <translation>大小</translation>
    </message>
    <message id="qtn_vide_options_delay">
        <source>Delay</source>
        <extracomment>How much later than the file says subtitles come; a colon and seconds follow</extracomment>
        <translation>延迟</translation>
    </message>
    <message id="qtn_vide_options_seconds">
        <source>%1 s</source>
        <extracomment>Seconds, as short as can be; %1 is a number with or without its sign</extracomment>
        <translation>%1 秒</translation>
    </message>
    <message id="qtn_vide_options_smaller">
        <source>Smaller</source>
        <extracomment>For assistive technology: makes subtitles smaller</extracomment>
        <translation>缩小</translation>
    </message>
    <message id="qtn_vide_options_larger">
        <source>Larger</source>
        <extracomment>For assistive technology: makes subtitles larger</extracomment>
        <translation>放大</translation>
    </message>
    <message id="qtn_vide_options_loop_start">
        <source>Start here</source>
        <extracomment>The section that is repeated starts at the present place of the video</extracomment>
        <translation>从此处开始</translation>
    </message>
    <message id="qtn_vide_options_loop_end">
        <source>End here</source>
        <extracomment>The section that is repeated ends at the present place of the video</extracomment>
        <translation>到此处结束</translation>
    </message>
    <message id="qtn_vide_options_chapter">
        <source>Chapter %1</source>
        <extracomment>A chapter without a title; %1 is its number</extracomment>
        <translation>第 %1 章</translation>
    </message>
    <message id="qtn_vide_options_chosen">
        <source>%1, selected</source>
        <extracomment>For assistive technology: the one of several options that holds; %1 is its text</extracomment>
        <translation>%1，已选择</translation>
    </message>
    <message id="qtn_comm_object_details">
        <source>Details</source>
        <extracomment>Menu</extracomment>
        <translation>详细信息</translation>
    </message>
    <message id="qtn_comm_command_share">
        <source>Share</source>
        <extracomment>Menu</extracomment>
        <translation>分享</translation>
    </message>
    <message id="qtn_comm_command_rename">
        <source>Rename</source>
        <extracomment>Menu; the video gets another title, the file keeps its name</extracomment>
        <translation>重命名</translation>
    </message>
    <message id="qtn_comm_command_delete">
        <source>Delete</source>
        <extracomment>Menu</extracomment>
        <translation>删除</translation>
    </message>
    <message id="qtn_comm_content_save_as">
        <source>Save as</source>
        <extracomment>Menu</extracomment>
        <translation>另存为</translation>
    </message>
    <message id="qtn_comm_command_done">
        <source>Done</source>
        <extracomment>Action key of the on-screen keyboard</extracomment>
        <translation>完成</translation>
    </message>
    <message id="qtn_comm_yes">
        <source>Yes</source>
        <extracomment>Button: the answer to a question, for example whether to delete a video</extracomment>
        <translation>是</translation>
    </message>
    <message id="qtn_comm_no">
        <source>No</source>
        <extracomment>Button: the answer to a question, for example whether to delete a video</extracomment>
        <translation>否</translation>
    </message>
    <message id="qtn_comm_save">
        <source>Save</source>
        <extracomment>Button of a sheet</extracomment>
        <translation>保存</translation>
    </message>
    <message id="qtn_comm_cancel">
        <source>Cancel</source>
        <extracomment>Button of a sheet</extracomment>
        <translation>取消</translation>
    </message>
    <message id="qtn_comm_gigabytes">
        <source>%1 GB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 GB</translation>
    </message>
    <message id="qtn_comm_megabytes">
        <source>%1 MB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 MB</translation>
    </message>
    <message id="qtn_comm_kilobytes">
        <source>%1 kB</source>
        <extracomment>Size of a file; %1 is a number with one decimal</extracomment>
        <translation>%1 KB</translation>
    </message>
    <message id="qtn_share_email">
        <source>E-mail</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>电子邮件</translation>
    </message>
    <message id="qtn_share_open_with">
        <source>Open with another program</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>用其他应用打开</translation>
    </message>
    <message id="qtn_share_bluetooth">
        <source>Bluetooth</source>
        <extracomment>Row of the share sheet, and the title above the devices</extracomment>
        <translation>蓝牙</translation>
    </message>
    <message id="qtn_share_copy_address">
        <source>Copy address</source>
        <extracomment>Row of the share sheet</extracomment>
        <translation>复制地址</translation>
    </message>
    <message id="qtn_share_items" numerus="yes">
        <source>%Ln item(s)</source>
        <extracomment>Title of the share sheet when several things are shared; %Ln their number</extracomment>
        <translation>
            <numerusform>%Ln 个项目</numerusform>
        </translation>
    </message>
    <message id="qtn_share_no_devices">
        <source>No paired devices. Pair the other device in the system settings first.</source>
        <extracomment>In the share sheet, in place of the devices</extracomment>
        <translation>没有已配对的设备。请先在系统设置中与另一台设备配对。</translation>
    </message>
    <message id="qtn_share_copied">
        <source>Address copied</source>
        <extracomment>The address is on the clipboard</extracomment>
        <translation>地址已复制</translation>
    </message>
    <message id="qtn_share_sending">
        <source>Sending to %1</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>正在发送到 %1</translation>
    </message>
    <message id="qtn_share_sending_percent">
        <source>Sending to %1: %2%</source>
        <extracomment>By Bluetooth; %1 the name of the device, %2 how much is sent</extracomment>
        <translation>正在发送到 %1：%2%</translation>
    </message>
    <message id="qtn_share_sent">
        <source>Sent to %1</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>已发送到 %1</translation>
    </message>
    <message id="qtn_share_stop">
        <source>Stop sending to %1</source>
        <extracomment>Row of the share sheet; %1 is a device</extracomment>
        <translation>停止发送到 %1</translation>
    </message>
    <message id="qtn_share_stopped">
        <source>Sending to %1 was stopped</source>
        <extracomment>Banner; %1 is a device</extracomment>
        <translation>已停止发送到 %1</translation>
    </message>
    <message id="qtn_share_error_file">
        <source>The file cannot be read.</source>
        <extracomment>It is not there any more, or may not be read</extracomment>
        <translation>无法读取文件。</translation>
    </message>
    <message id="qtn_share_error_email">
        <source>The e-mail could not be prepared.</source>
        <extracomment>The mail program could not be started with the video</extracomment>
        <translation>无法准备电子邮件。</translation>
    </message>
    <message id="qtn_share_error_open">
        <source>It could not be opened with another program.</source>
        <extracomment>No other program took the video</extracomment>
        <translation>无法用其他应用打开。</translation>
    </message>
    <message id="qtn_share_error_bluetooth">
        <source>It could not be sent to %1.</source>
        <extracomment>By Bluetooth; %1 the name of the device</extracomment>
        <translation>无法发送到 %1。</translation>
    </message>
    <message id="qtn_saveas_name">
        <source>Name</source>
        <extracomment>Accessible name and prompt of the field for a file's name, without its extension</extracomment>
        <translation>名称</translation>
    </message>
    <message id="qtn_saveas_folder">
        <source>Folder: %1</source>
        <extracomment>Line of the save-as sheet: where the copy will be; %1 the name of a folder</extracomment>
        <translation>文件夹：%1</translation>
    </message>
    <message id="qtn_saveas_size">
        <source>Size: %1</source>
        <extracomment>Line of the save-as sheet; %1 how large the file is, such as 1.2 GB</extracomment>
        <translation>大小：%1</translation>
    </message>
    <message id="qtn_saveas_free">
        <source>Free space: %1</source>
        <extracomment>Line of the save-as sheet; %1 how much room there is where the copy will be, such as 12.4 GB</extracomment>
        <translation>可用空间：%1</translation>
    </message>
    <message id="qtn_saveas_copying">
        <source>Saving “%1”</source>
        <extracomment>Heading of the save-as sheet while it copies; %1 the name of the copy</extracomment>
        <translation>正在保存“%1”</translation>
    </message>
    <message id="qtn_saveas_progress">
        <source>%1 of %2</source>
        <extracomment>How far a copy is; %1 how much is copied, %2 how much there is, such as 412 MB and 1.2 GB</extracomment>
        <translation>%1/%2</translation>
    </message>
    <message id="qtn_saveas_saved">
        <source>Saved in %1</source>
        <extracomment>Banner; the copy is there; %1 the name of its folder</extracomment>
        <translation>已保存到“%1”</translation>
    </message>
    <message id="qtn_saveas_replace_title">
        <source>Replace the file?</source>
        <extracomment>Question when something has the name of the copy</extracomment>
        <translation>要替换文件吗？</translation>
    </message>
    <message id="qtn_saveas_replace_text">
        <source>“%1” is already there. It will be deleted if you replace it.</source>
        <extracomment>Text of that question; %1 the name</extracomment>
        <translation>“%1”已存在。替换后，原文件将被删除。</translation>
    </message>
    <message id="qtn_saveas_error_name">
        <source>A name cannot contain “/” or begin with a dot.</source>
        <extracomment>What was typed is no name for a file</extracomment>
        <translation>名称不能包含“/”，也不能以点开头。</translation>
    </message>
    <message id="qtn_saveas_error_long">
        <source>This name is too long.</source>
        <extracomment>What was typed is no name for a file</extracomment>
        <translation>名称太长。</translation>
    </message>
    <message id="qtn_saveas_error_characters">
        <source>This name is not possible in this folder.</source>
        <extracomment>A memory card does not take every character in a name</extracomment>
        <translation>此文件夹不支持该名称。</translation>
    </message>
    <message id="qtn_saveas_error_folder_there">
        <source>There is a folder with this name. Choose another name.</source>
        <extracomment>A folder cannot be replaced by a file</extracomment>
        <translation>已有同名文件夹。请选择其他名称。</translation>
    </message>
    <message id="qtn_saveas_error_same">
        <source>The file is already there under this name. Choose another name.</source>
        <extracomment>The file would replace itself</extracomment>
        <translation>该文件已使用此名称保存在那里。请选择其他名称。</translation>
    </message>
    <message id="qtn_saveas_error_space">
        <source>There is not enough free space.</source>
        <extracomment>A copy does not fit</extracomment>
        <translation>可用空间不足。</translation>
    </message>
    <message id="qtn_saveas_error_read_only">
        <source>Files cannot be saved in this folder.</source>
        <extracomment>A folder may not be written to</extracomment>
        <translation>无法在此文件夹中保存文件。</translation>
    </message>
    <message id="qtn_saveas_error_large">
        <source>The file is too large for this storage.</source>
        <extracomment>Some memory cards take no file of more than 4 GB</extracomment>
        <translation>文件太大，无法保存到此存储设备。</translation>
    </message>
    <message id="qtn_saveas_error_source">
        <source>The file to be copied cannot be read.</source>
        <extracomment>What is to be copied is not there any more, or may not be read</extracomment>
        <translation>无法读取要复制的文件。</translation>
    </message>
    <message id="qtn_saveas_error_changed">
        <source>The file changed while it was being saved. Try again later.</source>
        <extracomment>Somebody writes to what is copied, such as a download</extracomment>
        <translation>保存时文件发生了更改。请稍后重试。</translation>
    </message>
    <message id="qtn_saveas_error_destination">
        <source>The folder is not there any more.</source>
        <extracomment>Its memory card was pulled, or it was deleted</extracomment>
        <translation>文件夹已不存在。</translation>
    </message>
    <message id="qtn_saveas_error">
        <source>The file could not be saved.</source>
        <extracomment>A copy failed for a reason without a better description</extracomment>
        <translation>无法保存文件。</translation>
    </message>
    <message id="qtn_extension_description">
        <source>“%1” is not used: its description is faulty.</source>
        <extracomment>An extension, %1, cannot be used: the file that describes it is faulty</extracomment>
        <translation>未使用“%1”：其描述文件有误。</translation>
    </message>
    <message id="qtn_extension_missing">
        <source>“%1” is not used: its program file is missing.</source>
        <extracomment>An extension, %1, cannot be used: its program file is not there</extracomment>
        <translation>未使用“%1”：缺少其程序文件。</translation>
    </message>
    <message id="qtn_extension_qt">
        <source>“%1” is not used: it was made for another version of Qt.</source>
        <extracomment>An extension, %1, cannot be used: it was made for another version of Qt, a software library (a name)</extracomment>
        <translation>未使用“%1”：它适用于其他版本的 Qt。</translation>
    </message>
    <message id="qtn_extension_interface">
        <source>“%1” is not used: it was made for another version of Kestrel.</source>
        <extracomment>An extension, %1, cannot be used: it was made for another version of this program, Kestrel (a name)</extracomment>
        <translation>未使用“%1”：它适用于其他版本的 Kestrel。</translation>
    </message>
    <message id="qtn_extension_start">
        <source>“%1” is not used: it could not be started.</source>
        <extracomment>An extension, %1, cannot be used: it failed when it was started</extracomment>
        <translation>未使用“%1”：无法启动。</translation>
    </message>
    <message id="qtn_extension_empty">
        <source>“%1” has nothing to show.</source>
        <extracomment>An extension, %1, gives nothing that could stand on the page</extracomment>
        <translation>“%1”没有可显示的内容。</translation>
    </message>
    <message id="qtn_extension_call">
        <source>“%1” failed and was switched off.</source>
        <extracomment>An extension, %1, failed while it was used, and is not used any more</extracomment>
        <translation>“%1”出错，已停用。</translation>
    </message>
    <message id="qtn_extension_nonsense">
        <source>“%1” asked for something that is not possible.</source>
        <extracomment>An extension, %1, wanted something that cannot be done, such as playing no video</extracomment>
        <translation>“%1”请求了无法执行的操作。</translation>
    </message>
    <message id="qtn_extension_crashed">
        <source>“%1” is not used: Kestrel crashed in it the last time.</source>
        <extracomment>An extension, %1, ended this program the last time, and is not used now</extracomment>
        <translation>未使用“%1”：上次它导致 Kestrel 崩溃。</translation>
    </message>
    <message id="qtn_extension_hung">
        <source>“%1” is not used: it stopped responding the last time.</source>
        <extracomment>An extension, %1, kept this program busy the last time until it was ended, and is not used now</extracomment>
        <translation>未使用“%1”：上次它停止了响应。</translation>
    </message>
    <message id="qtn_extension_try_again">
        <source>Try again</source>
        <extracomment>Button: use an extension again that ended this program the last time</extracomment>
        <translation>重试</translation>
    </message>
</context>
</TS>
