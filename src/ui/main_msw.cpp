#include "ui/app.h"

wxIMPLEMENT_APP(kestrel::App);
