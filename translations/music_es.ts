<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es_ES" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="qtn_comm_back">
        <source>Back</source>
        <extracomment>Name of the back button for assistive technology</extracomment>
        <translation>Atrás</translation>
    </message>
    <message id="qtn_comm_menu">
        <source>Menu</source>
        <extracomment>Name of the menu button for assistive technology</extracomment>
        <translation>Menú</translation>
    </message>
    <message id="qtn_comm_clear">
        <source>Clear</source>
        <extracomment>Name of the clear button of a text field</extracomment>
        <translation>Borrar</translation>
    </message>
    <message id="qtn_comm_command_cut">
        <source>Cut</source>
        <extracomment>Command of a text field, in a row with copy, paste and select all: as short as can be</extracomment>
        <translation>Cortar</translation>
    </message>
    <message id="qtn_comm_command_copy">
        <source>Copy</source>
        <extracomment>Command of a text field, in a row with cut, paste and select all: as short as can be</extracomment>
        <translation>Copiar</translation>
    </message>
    <message id="qtn_comm_command_paste">
        <source>Paste</source>
        <extracomment>Command of a text field, in a row with cut, copy and select all: as short as can be</extracomment>
        <translation>Pegar</translation>
    </message>
    <message id="qtn_comm_command_select_all">
        <source>Select all</source>
        <extracomment>Command of a text field, in a row with cut, copy and paste: as short as can be</extracomment>
        <translation>Todo</translation>
    </message>
    <message id="qtn_musi_play">
        <source>Play</source>
        <extracomment>Name of a player control</extracomment>
        <translation>Reproducir</translation>
    </message>
    <message id="qtn_musi_pause">
        <source>Pause</source>
        <extracomment>Name of a player control</extracomment>
        <translation>Pausar</translation>
    </message>
    <message id="qtn_musi_position">
        <source>Position</source>
        <extracomment>Name of the seek line</extracomment>
        <translation>Posición</translation>
    </message>
    <message id="qtn_musi_volume">
        <source>Volume</source>
        <extracomment>Name of the volume control</extracomment>
        <translation>Volumen</translation>
    </message>
    <message id="qtn_comm_item_of_list">
        <source>%1 of %2</source>
        <extracomment>For assistive technology: which item of a list this is, and of how many</extracomment>
        <translation>%1 de %2</translation>
    </message>
    <message id="qtn_musi_position_of">
        <source>%1 of %2</source>
        <extracomment>For assistive technology: the value of the seek line; %1 the time that has played, %2 the duration</extracomment>
        <translation>%1 de %2</translation>
    </message>
    <message id="qtn_musi_mute">
        <source>Mute</source>
        <extracomment>Name of a player control</extracomment>
        <translation>Silenciar</translation>
    </message>
    <message id="qtn_musi_unmute">
        <source>Unmute</source>
        <extracomment>Name of the mute button while the sound is off</extracomment>
        <translation>Activar sonido</translation>
    </message>
    <message id="qtn_musi_options">
        <source>Options</source>
        <extracomment>Name of a player control: opens what can be chosen for this video, such as subtitles and speed</extracomment>
        <translation>Opciones</translation>
    </message>
    <message id="qtn_musi_full_screen">
        <source>Full screen</source>
        <extracomment>Name of a player control: makes the picture fill the screen</extracomment>
        <translation>Pantalla completa</translation>
    </message>
    <message id="qtn_musi_full_screen_leave">
        <source>Exit full screen</source>
        <extracomment>Name of a player control: makes the picture a window's again</extracomment>
        <translation>Salir de pantalla completa</translation>
    </message>
</context>
</TS>
