// The numbers of the dialogs and of what is in them; read by the resource compiler too.
#ifndef QUILLON_DIALOGS_RESOURCE_H
#define QUILLON_DIALOGS_RESOURCE_H

// NOLINTBEGIN(modernize-macro-to-enum): the resource compiler knows no enumerations
#define IDI_PROGRAM 1

#define IDD_SEND 100
#define IDC_TO_LABEL 1001
#define IDC_TO 1002
#define IDC_CC_LABEL 1003
#define IDC_CC 1004
#define IDC_BCC_LABEL 1005
#define IDC_BCC 1006
#define IDC_SUBJECT_LABEL 1007
#define IDC_SUBJECT 1008
#define IDC_TEXT_LABEL 1009
#define IDC_TEXT 1010
#define IDC_ADDRESSES 1011
#define IDC_ATTACHMENTS 1012
#define IDC_FILES 1013
#define IDC_IMPORTANCE_LABEL 1014
#define IDC_IMPORTANCE 1015
#define IDC_RECEIPT 1016
#define IDC_FAILURE_ICON 1017
#define IDC_FAILURE 1018

#define IDD_ATTACHMENTS 101
#define IDC_LIST_LABEL 1101
#define IDC_LIST 1102
#define IDC_ADD 1103
#define IDC_REMOVE 1104
#define IDC_RENAME 1105
#define IDC_LIST_FAILURE 1106

#define IDD_SELECT_SYSTEM 102
#define IDC_SYSTEMS_LABEL 1201
#define IDC_SYSTEMS 1202

#define IDD_LOGIN 103
#define IDD_LOGIN_OPEN 104
#define IDD_LOGIN_LOCAL 105
#define IDD_LOGIN_NAME 106
#define IDC_SERVER_LABEL 1301
#define IDC_SERVER 1302
#define IDC_NAME_LABEL 1303
#define IDC_NAME 1304
#define IDC_PASSWORD_LABEL 1305
#define IDC_PASSWORD 1306
// NOLINTEND(modernize-macro-to-enum)

#endif
