// Resource identifiers shared by the .rc file and the code.
#pragma once
#define IDI_TOLVANE 1

// The startup tree's pictures, in the order of the tree's image list.
#define IDI_TREE_USER 101
#define IDI_TREE_GROUP 102
#define IDI_TREE_STARTUP 103
#define IDI_TREE_REGISTRY 104
#define IDI_TREE_DELAY 105
#define IDI_TREE_STOPPED 106

// The program's commands: one id each, shared by the menus, the toolbar, the tray menu and the
// accelerators. The main window's command table says what each does and when it can be used.
#define ID_CMD_OPEN 40001
#define ID_CMD_QUIT 40002
#define ID_CMD_REFRESH 40003
#define ID_CMD_DELAY 40010
#define ID_CMD_STOP 40011
#define ID_CMD_RUN 40012

// The main window's keys.
#define IDA_MAIN 201
