// The tip window's template and controls; the resource script reads these too.
#pragma once

#define IDD_TIP 340
#define IDC_TIP_HEADING 341
#define IDC_TIP_TEXT 342
#define IDC_TIP_NEXT 343
#define IDC_TIP_SHOW 344
