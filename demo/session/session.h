// The scripted session: the demo host used by a script instead of a person, with real
// mouse input. It opens the sample client's editor floating and embedded, edits curves
// with the mouse (animated too), undoes and redoes from the Edit menu, saves the scene,
// opens it again and closes, checking on the way that
//   - the viewport's pixels are the picture mapped through the curves,
//   - Undo and Redo restore the curves,
//   - the reopened scene evaluates to the same values.
// It writes screenshots (PNG) and the saved scene into a folder and prints what it did.
#pragma once

#include <string>

class HostApp;

/// Runs the session in `app` (created, shown, with its scene) and writes into `folder`
/// (made when missing). Returns 0 when every check passed, else 1.
int RunScriptedSession(HostApp& app, const std::string& folder);
