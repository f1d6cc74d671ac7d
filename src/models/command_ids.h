// The program's commands: one id each, shared by the menus, the toolbar, the tray menu and the
// accelerators. The main window's command table says what each does and when it can be used.
// Plain defines: the resource script reads them too.
#pragma once

#define ID_CMD_OPEN 40001
#define ID_CMD_QUIT 40002
#define ID_CMD_REFRESH 40003
#define ID_CMD_SAVE 40004
#define ID_CMD_MINIMIZE_TO_TRAY 40005
#define ID_CMD_GROUPS 40006
#define ID_CMD_OPTIONS 40007
#define ID_CMD_HELP 40008
#define ID_CMD_ABOUT 40009
#define ID_CMD_LAST_LOGON 40015

// The selected item's moves (the tree's popup).
#define ID_CMD_DELAY 40010
#define ID_CMD_STOP 40011
#define ID_CMD_RUN 40012
#define ID_CMD_PROPERTIES 40013
#define ID_CMD_SEARCH_ONLINE 40014

// The checked items' moves (the toolbar).
#define ID_CMD_DELAY_CHECKED 40020
#define ID_CMD_STOP_CHECKED 40021
#define ID_CMD_RUN_CHECKED 40022

#define ID_CMD_TIPS 40030
#define ID_CMD_FORUMS 40031
#define ID_CMD_SUPPORT_MAIL 40032
#define ID_CMD_MAIN_PAGE 40033

// Language i of the language list is ID_CMD_LANGUAGE_FIRST + i.
#define ID_CMD_LANGUAGE_FIRST 41000
#define ID_CMD_LANGUAGE_LAST 41999
