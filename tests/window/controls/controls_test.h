// Ids of the dialog of the control tests.
#pragma once

#define IDD_CONTROLS 100
#define IDC_FIRST 201
#define IDC_SECOND 202
#define IDC_LINK 203
