// The options dialog's template and controls; the resource script reads these too.
#pragma once

#define IDD_OPTIONS 320
#define IDC_OPT_PAGES 321
#define IDC_OPT_FRAME 322
#define IDC_OPT_TITLE 323
#define IDC_OPT_EXAMPLE 324
#define IDC_OPT_DELAY_LABEL 325
#define IDC_OPT_DELAY 326
#define IDC_OPT_SECONDS 327
#define IDC_OPT_RUN_LABEL 328
#define IDC_OPT_RUN 329
#define IDC_OPT_CLOSE_LABEL 330
#define IDC_OPT_CLOSE 331
#define IDC_OPT_SHOW_TIPS 332
#define IDC_OPT_WAIT_IDLE 333
