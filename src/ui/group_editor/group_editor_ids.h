// The program group editor's template and controls; the resource script reads these too.
#pragma once

#define IDD_GROUP_EDITOR 300
#define IDC_GE_TREE_PLACE 301
#define IDC_GE_MESSAGE 302
#define IDC_GE_GROUP_LABEL 303
#define IDC_GE_GROUP 304
#define IDC_GE_ADD_GROUP 305
#define IDC_GE_EDIT_GROUP 306
#define IDC_GE_ADD_NEW 307
#define IDC_GE_EDIT 308
#define IDC_GE_PATH_LABEL 309
#define IDC_GE_PATH 310
#define IDC_GE_BROWSE 311
#define IDC_GE_PARAMETERS_LABEL 312
#define IDC_GE_PARAMETERS 313
#define IDC_GE_DELAY_LABEL 314
#define IDC_GE_DELAY 315
#define IDC_GE_SECONDS 316
#define IDC_GE_ADD 317
#define IDC_GE_REMOVE 318
#define IDC_GE_TREE 319
