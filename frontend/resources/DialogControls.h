// Resource ids of the stub, shared by the resource script and the dialog code.
#pragma once

// The extraction dialog's controls.
#define IDC_BROWSE_FOLDER 1001
#define IDC_STATUS_LINE 1003
#define IDC_BROWSE_KEY 1006
#define IDC_TARGET_FOLDER 1007
#define IDC_PASSWORD 1008
#define IDC_KEY_PATH 1009
#define IDC_EXTRACT 1010
#define IDC_CANCEL_EXTRACTION 1011
#define IDC_PROGRESS_BAR 1012

// The program's icon group.
#define IDI_STUB 107
