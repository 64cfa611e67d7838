#pragma once
// The controls of the machine and the numbers that they are spoken to with.
//
// Window classes that every process has: "Static", "Button", "Edit", "ListBox", "ComboBox" and
// "ComboBoxEx32". A control belongs to the thread that made it, as every window does. Its notices come to its
// parent as WM_COMMAND; the parent may destroy it, and itself, within any of them. Where memory runs out a
// control keeps what it holds, and says so with what Windows answers then: LB_ERRSPACE, CB_ERRSPACE, FALSE,
// EN_ERRSPACE.
//
// Not there: owner-drawn kinds, lists of several choices, undo, the clipboard, images other than icons,
// double clicks.

#include <platform/types.h>

// --- what a dialog's keys ask -----------------------------------------------------------------------------

inline constexpr LRESULT DLGC_WANTARROWS = 0x1;
inline constexpr LRESULT DLGC_WANTTAB = 0x2;
inline constexpr LRESULT DLGC_WANTALLKEYS = 0x4;
inline constexpr LRESULT DLGC_WANTMESSAGE = 0x4;
inline constexpr LRESULT DLGC_HASSETSEL = 0x8;
inline constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x10;
inline constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x20;
inline constexpr LRESULT DLGC_RADIOBUTTON = 0x40;
inline constexpr LRESULT DLGC_WANTCHARS = 0x80;
inline constexpr LRESULT DLGC_STATIC = 0x100;
inline constexpr LRESULT DLGC_BUTTON = 0x2000;

// --- static -----------------------------------------------------------------------------------------------

inline constexpr DWORD SS_LEFT = 0x0;
inline constexpr DWORD SS_CENTER = 0x1;
inline constexpr DWORD SS_RIGHT = 0x2;
inline constexpr DWORD SS_ICON = 0x3;
inline constexpr DWORD SS_BLACKRECT = 0x4;
inline constexpr DWORD SS_GRAYRECT = 0x5;
inline constexpr DWORD SS_WHITERECT = 0x6;
inline constexpr DWORD SS_BLACKFRAME = 0x7;
inline constexpr DWORD SS_GRAYFRAME = 0x8;
inline constexpr DWORD SS_WHITEFRAME = 0x9;
inline constexpr DWORD SS_SIMPLE = 0xB;
inline constexpr DWORD SS_LEFTNOWORDWRAP = 0xC;
inline constexpr DWORD SS_ETCHEDHORZ = 0x10;
inline constexpr DWORD SS_ETCHEDVERT = 0x11;
inline constexpr DWORD SS_ETCHEDFRAME = 0x12;
inline constexpr DWORD SS_TYPEMASK = 0x1F;
inline constexpr DWORD SS_NOPREFIX = 0x80;
inline constexpr DWORD SS_NOTIFY = 0x100;
inline constexpr DWORD SS_CENTERIMAGE = 0x200;
inline constexpr DWORD SS_REALSIZECONTROL = 0x40;
inline constexpr DWORD SS_SUNKEN = 0x1000;
inline constexpr UINT STN_CLICKED = 0;
inline constexpr UINT STN_ENABLE = 2;
inline constexpr UINT STN_DISABLE = 3;

// The icon of an SS_ICON, which takes on its size unless it has SS_CENTERIMAGE or SS_REALSIZECONTROL. It
// stays its owner's; the one before is the result. Of images there are icons alone.
inline constexpr UINT STM_SETICON = 0x170;
inline constexpr UINT STM_GETICON = 0x171;
inline constexpr UINT STM_SETIMAGE = 0x172;
inline constexpr UINT STM_GETIMAGE = 0x173;
inline constexpr WPARAM IMAGE_ICON = 1;

// --- button -----------------------------------------------------------------------------------------------

inline constexpr DWORD BS_PUSHBUTTON = 0x0;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x1;
inline constexpr DWORD BS_CHECKBOX = 0x2;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x3;
inline constexpr DWORD BS_RADIOBUTTON = 0x4;
inline constexpr DWORD BS_3STATE = 0x5;
inline constexpr DWORD BS_AUTO3STATE = 0x6;
inline constexpr DWORD BS_GROUPBOX = 0x7;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x9;
inline constexpr DWORD BS_TYPEMASK = 0xF;
inline constexpr DWORD BS_LEFTTEXT = 0x20;
inline constexpr DWORD BS_NOTIFY = 0x4000;
inline constexpr UINT BM_GETCHECK = 0xF0;
inline constexpr UINT BM_SETCHECK = 0xF1;
inline constexpr UINT BM_GETSTATE = 0xF2;
inline constexpr UINT BM_SETSTATE = 0xF3;
inline constexpr UINT BM_SETSTYLE = 0xF4;
inline constexpr UINT BM_CLICK = 0xF5;
inline constexpr UINT BN_CLICKED = 0;
inline constexpr UINT BN_SETFOCUS = 6;
inline constexpr UINT BN_KILLFOCUS = 7;
inline constexpr LRESULT BST_UNCHECKED = 0;
inline constexpr LRESULT BST_CHECKED = 1;
inline constexpr LRESULT BST_INDETERMINATE = 2;
inline constexpr LRESULT BST_PUSHED = 4;
inline constexpr LRESULT BST_FOCUS = 8;

// --- edit -------------------------------------------------------------------------------------------------

inline constexpr DWORD ES_LEFT = 0x0;
inline constexpr DWORD ES_CENTER = 0x1;
inline constexpr DWORD ES_RIGHT = 0x2;
inline constexpr DWORD ES_MULTILINE = 0x4;
inline constexpr DWORD ES_UPPERCASE = 0x8;
inline constexpr DWORD ES_LOWERCASE = 0x10;
inline constexpr DWORD ES_PASSWORD = 0x20;
inline constexpr DWORD ES_AUTOVSCROLL = 0x40;
inline constexpr DWORD ES_AUTOHSCROLL = 0x80;
inline constexpr DWORD ES_NOHIDESEL = 0x100;
inline constexpr DWORD ES_READONLY = 0x800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;
inline constexpr DWORD ES_NUMBER = 0x2000;
inline constexpr UINT EM_GETSEL = 0xB0;
inline constexpr UINT EM_SETSEL = 0xB1;
inline constexpr UINT EM_GETMODIFY = 0xB8;
inline constexpr UINT EM_SETMODIFY = 0xB9;
inline constexpr UINT EM_GETLINECOUNT = 0xBA;
inline constexpr UINT EM_REPLACESEL = 0xC2;
inline constexpr UINT EM_LIMITTEXT = 0xC5;
inline constexpr UINT EM_SETLIMITTEXT = 0xC5;
inline constexpr UINT EM_SETREADONLY = 0xCF;
inline constexpr UINT EM_GETLIMITTEXT = 0xD5;
inline constexpr UINT EN_SETFOCUS = 0x100;
inline constexpr UINT EN_KILLFOCUS = 0x200;
inline constexpr UINT EN_CHANGE = 0x300;
inline constexpr UINT EN_UPDATE = 0x400;
inline constexpr UINT EN_ERRSPACE = 0x500;
inline constexpr UINT EN_MAXTEXT = 0x501;

// --- list box ---------------------------------------------------------------------------------------------

inline constexpr DWORD LBS_NOTIFY = 0x1;
inline constexpr DWORD LBS_SORT = 0x2;
inline constexpr DWORD LBS_NOREDRAW = 0x4;
inline constexpr DWORD LBS_HASSTRINGS = 0x40;
inline constexpr DWORD LBS_NOINTEGRALHEIGHT = 0x100;
inline constexpr DWORD LBS_STANDARD = 0xA00003;
inline constexpr UINT LB_ADDSTRING = 0x180;
inline constexpr UINT LB_INSERTSTRING = 0x181;
inline constexpr UINT LB_DELETESTRING = 0x182;
inline constexpr UINT LB_RESETCONTENT = 0x184;
inline constexpr UINT LB_SETCURSEL = 0x186;
inline constexpr UINT LB_GETSEL = 0x187;
inline constexpr UINT LB_GETCURSEL = 0x188;
inline constexpr UINT LB_GETTEXT = 0x189;
inline constexpr UINT LB_GETTEXTLEN = 0x18A;
inline constexpr UINT LB_GETCOUNT = 0x18B;
inline constexpr UINT LB_SELECTSTRING = 0x18C;
inline constexpr UINT LB_GETTOPINDEX = 0x18E;
inline constexpr UINT LB_FINDSTRING = 0x18F;
inline constexpr UINT LB_SETTOPINDEX = 0x197;
inline constexpr UINT LB_GETITEMRECT = 0x198;
inline constexpr UINT LB_GETITEMDATA = 0x199;
inline constexpr UINT LB_SETITEMDATA = 0x19A;
inline constexpr UINT LB_GETITEMHEIGHT = 0x1A1;
inline constexpr UINT LB_FINDSTRINGEXACT = 0x1A2;
inline constexpr LRESULT LB_OKAY = 0;
inline constexpr LRESULT LB_ERR = -1;
inline constexpr LRESULT LB_ERRSPACE = -2;
inline constexpr UINT LBN_SELCHANGE = 1;
inline constexpr UINT LBN_SETFOCUS = 4;
inline constexpr UINT LBN_KILLFOCUS = 5;

// --- combo box --------------------------------------------------------------------------------------------

inline constexpr DWORD CBS_SIMPLE = 0x1;
inline constexpr DWORD CBS_DROPDOWN = 0x2;
inline constexpr DWORD CBS_DROPDOWNLIST = 0x3;
inline constexpr DWORD CBS_AUTOHSCROLL = 0x40;
inline constexpr DWORD CBS_SORT = 0x100;
inline constexpr DWORD CBS_HASSTRINGS = 0x200;
inline constexpr DWORD CBS_NOINTEGRALHEIGHT = 0x400;
inline constexpr DWORD CBS_UPPERCASE = 0x2000;
inline constexpr DWORD CBS_LOWERCASE = 0x4000;
inline constexpr UINT CB_GETEDITSEL = 0x140;
inline constexpr UINT CB_LIMITTEXT = 0x141;
inline constexpr UINT CB_SETEDITSEL = 0x142;
inline constexpr UINT CB_ADDSTRING = 0x143;
inline constexpr UINT CB_DELETESTRING = 0x144;
inline constexpr UINT CB_GETCOUNT = 0x146;
inline constexpr UINT CB_GETCURSEL = 0x147;
inline constexpr UINT CB_GETLBTEXT = 0x148;
inline constexpr UINT CB_GETLBTEXTLEN = 0x149;
inline constexpr UINT CB_INSERTSTRING = 0x14A;
inline constexpr UINT CB_RESETCONTENT = 0x14B;
inline constexpr UINT CB_FINDSTRING = 0x14C;
inline constexpr UINT CB_SELECTSTRING = 0x14D;
inline constexpr UINT CB_SETCURSEL = 0x14E;
inline constexpr UINT CB_SHOWDROPDOWN = 0x14F;
inline constexpr UINT CB_GETITEMDATA = 0x150;
inline constexpr UINT CB_SETITEMDATA = 0x151;
inline constexpr UINT CB_GETDROPPEDCONTROLRECT = 0x152;
inline constexpr UINT CB_GETDROPPEDSTATE = 0x157;
inline constexpr UINT CB_FINDSTRINGEXACT = 0x158;
inline constexpr LRESULT CB_OKAY = 0;
inline constexpr LRESULT CB_ERR = -1;
inline constexpr LRESULT CB_ERRSPACE = -2;
inline constexpr int CBN_ERRSPACE = -1; // 0xFFFF in WM_COMMAND's high word
inline constexpr UINT CBN_SELCHANGE = 1;
inline constexpr UINT CBN_SETFOCUS = 3;
inline constexpr UINT CBN_KILLFOCUS = 4;
inline constexpr UINT CBN_EDITCHANGE = 5;
inline constexpr UINT CBN_EDITUPDATE = 6;
inline constexpr UINT CBN_DROPDOWN = 7;
inline constexpr UINT CBN_CLOSEUP = 8;
inline constexpr UINT CBN_SELENDOK = 9;
inline constexpr UINT CBN_SELENDCANCEL = 10;

// --- ComboBoxEx32: a combo box within a window, whose lines go by records
// -----------------------------------

inline constexpr UINT CBEM_INSERTITEM = 1025;
inline constexpr UINT CBEM_GETITEM = 1028;
inline constexpr UINT CBEM_SETITEM = 1029;
inline constexpr UINT CBEM_GETCOMBOCONTROL = 1030;
inline constexpr UINT CBEM_GETEDITCONTROL = 1031;
inline constexpr UINT CBEM_DELETEITEM = CB_DELETESTRING;
inline constexpr UINT CBEIF_TEXT = 0x1;
inline constexpr UINT CBEIF_LPARAM = 0x20;

/// `mask` tells which fields count; text and lParam are kept, the numbers of images are not.
struct COMBOBOXEXITEM {
    UINT mask;
    int iItem; // -1: behind the last when it is inserted, the edit when it is read or set
    LPSTR pszText;
    int cchTextMax; // bytes, terminator included
    int iImage;
    int iSelectedImage;
    int iOverlay;
    int iIndent;
    LPARAM lParam;
};
static_assert(sizeof(COMBOBOXEXITEM) == 36 && offsetof(COMBOBOXEXITEM, lParam) == 32);
