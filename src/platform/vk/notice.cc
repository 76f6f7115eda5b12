#include "platform/vk/notice.h"

#include "platform/vk/text.h"

#include <Xm/MessageB.h>
#include <Xm/Xm.h>
#include <cstdio>
#include <string>

namespace {

Widget open_notice = nullptr;

void gone(Widget notice, XtPointer, XtPointer)
{
    if (notice == open_notice)
        open_notice = nullptr;
}

void dismissed(Widget notice, XtPointer, XtPointer) { XtDestroyWidget(XtParent(notice)); }

Widget make_notice(Widget near)
{
    char name[] = "notImplemented";
    Arg args[] = {
        {const_cast<String>(XmNdeleteResponse), XmDESTROY},
        {const_cast<String>(XmNautoUnmanage), True},
    };
    Widget notice = XmCreateInformationDialog(near, name, args, XtNumber(args));
    XtUnmanageChild(XmMessageBoxGetChild(notice, XmDIALOG_CANCEL_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(notice, XmDIALOG_HELP_BUTTON));
    XtAddCallback(notice, XmNokCallback, dismissed, nullptr);
    XtAddCallback(notice, XmNdestroyCallback, gone, nullptr);
    return notice;
}

}

void VkUnimplemented(Widget near, const char* what)
{
    std::fprintf(stderr, "%s: not implemented\n", what);
    if (near == nullptr)
        return;
    if (open_notice == nullptr)
        open_notice = make_notice(near);
    VkString text(std::string(what) + " is not implemented.");
    VkString title("Not implemented");
    XtVaSetValues(open_notice, XmNmessageString, text.get(), XmNdialogTitle, title.get(), nullptr);
    XtManageChild(open_notice);
}
