#pragma once
// The interactive way of the stub: the dialog on Windows, the terminal elsewhere. It works on
// the running executable itself and returns when the user is done.

void RunInteractiveFrontEnd();
