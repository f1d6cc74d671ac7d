// The about box's template and controls; the resource script reads these too.
#pragma once

#define IDD_ABOUT 350
#define IDC_AB_TITLE 351
#define IDC_AB_VERSION 352
#define IDC_AB_FORUM 353
#define IDC_AB_UPDATES 354
