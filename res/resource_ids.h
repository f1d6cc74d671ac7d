// Resource identifiers shared by the .rc file and the code.
#pragma once
// The program's icon is the resource named "clock".

// The startup tree's pictures, in the order of the tree's image list.
#define IDI_TREE_USER 101
#define IDI_TREE_GROUP 102
#define IDI_TREE_STARTUP 103
#define IDI_TREE_REGISTRY 104
#define IDI_TREE_DELAY 105
#define IDI_TREE_STOPPED 106

#include "models/command_ids.h"

// The toolbar's pictures.
#define IDI_BAR_SAVE 111
#define IDI_BAR_REFRESH 112
#define IDI_BAR_RUN 115
#define IDI_BAR_PROPERTIES 116
#define IDI_BAR_LAST_LOGON 117
