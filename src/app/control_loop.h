// The idle procedure of the toolkit's event loop, which keeps everything going.
#pragma once

#include <X11/Intrinsic.h>

class MainWindowMainWindow;
class QD_Termination;

/// The one main window, null until it is made and once it is gone.
extern MainWindowMainWindow* mainWindow;

/// The registered idle procedure, to be removed at shutdown.
extern XtWorkProcId ctrlWorkProcHandle;

/// One pass: waits up to 100 ms for an event of the framework, an X event, a
/// member stream or a display request, whichever comes first, and handles it;
/// draws the level meters. At the end of the session it deletes the main window
/// and ends the process with status 0. `client` is the QD_Termination.
/// Returns False, so that it stays registered. From the first call on it is called
/// as well, without waiting, when the toolkit runs a loop of its own that leaves idle
/// procedures out (while it hands a selection over, say).
Boolean ctrlWorkProc(XtPointer client);

/// Ends both: the idle procedure is removed.
void qd_stop_control_loop();
