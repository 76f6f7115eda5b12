#include "platform/vk/wm_hints.h"

#include <Xm/MwmUtil.h>
#include <Xm/Xm.h>

void VkConfigureWM(
    Widget shell, int title, int resize, int menu, int minimize, int maximize, int move, int close)
{
    const int decorations = MWM_DECOR_BORDER | (title ? MWM_DECOR_TITLE : 0)
        | (resize ? MWM_DECOR_RESIZEH : 0) | (menu ? MWM_DECOR_MENU : 0)
        | (minimize ? MWM_DECOR_MINIMIZE : 0) | (maximize ? MWM_DECOR_MAXIMIZE : 0);
    const int functions = (resize ? MWM_FUNC_RESIZE : 0) | (minimize ? MWM_FUNC_MINIMIZE : 0)
        | (maximize ? MWM_FUNC_MAXIMIZE : 0) | (move ? MWM_FUNC_MOVE : 0)
        | (close ? MWM_FUNC_CLOSE : 0);
    XtVaSetValues(shell, XmNmwmDecorations, decorations, XmNmwmFunctions, functions, nullptr);
}
