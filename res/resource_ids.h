// Resource identifiers shared by the .rc file and the code.
#pragma once
#define IDI_TOLVANE 1
