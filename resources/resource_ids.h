// The ids of all resources: controls, dialogs, strings, icons, bitmaps and embedded files. For the resource scripts,
// the window and its tests.
#pragma once

#define IDS_ABOUT 101
#define IDS_PANE_FILE 102
#define IDS_PANE_BYTES 103
#define IDS_PANE_STATUS 104
#define IDS_NO_SOUND 105
#define IDS_PANE_PERCENT 106

#define IDM_ABOUTBOX 16

#define IDD_ABOUT 100
#define IDD_MAIN 102

#define IDR_MAIN_ICON 128

#define IDB_EFFECT_PICTURE 171
#define IDB_PROGRESS_CD 187
#define IDB_PROGRESS_DVD 189

#define IDR_RAW_CONVERTER 192
#define IDR_DEFAULT_SOUND 196

#define IDI_BROWSE 183
#define IDI_VANTREL 184
#define IDI_EXIT 185
#define IDI_ISO_TO_IML 190
#define IDI_ISO_TO_BIN 193
#define IDI_BIN_TO_ISO 194
#define IDI_FULL_PATH 198
#define IDI_RELATIVE_PATH 199
#define IDI_ISO_TO_DAX 201
#define IDI_DAX_TO_ISO 202
#define IDI_CHECK_POSTGAP 204
#define IDI_ISO_TO_CSO 206
#define IDI_CSO_TO_ISO 207

#define IDC_BROWSE 1
#define IDC_EXIT 2
#define IDC_FOLDER 1000
#define IDC_ISO_TO_IML 1001
#define IDC_FILE_NAME 1002
#define IDC_VANTREL 1005
#define IDC_EFFECT 1010
#define IDC_ALWAYS_ON_TOP 1011
#define IDC_ISO_TO_BIN 1012
#define IDC_STATUS_LINE 1013
#define IDC_OUTPUT_FOLDER 1019
#define IDC_OUTPUT_NAME 1020
#define IDC_BIN_TO_ISO 1021
#define IDC_SOUND 1022
#define IDC_IML_PATH 1024
#define IDC_FULL_PATH 1025
#define IDC_RELATIVE_PATH 1026
#define IDC_ISO_TO_DAX 1029
#define IDC_DAX_TO_ISO 1030
#define IDC_COMPRESSION 1031
#define IDC_CHECK_POSTGAP 1032
#define IDC_ISO_TO_CSO 1033
#define IDC_CSO_TO_ISO 1034
#define IDC_ADD_POSTGAP 1035

#define IDC_ABOUT_WEB_LINK 1000
#define IDC_ABOUT_MAIL_LINK 1002
