#pragma once

namespace kestrel {

class TextPane;

// Lets assistive programs read the text of the pane, its caret and its selection, and
// tells them of changes, for as long as the pane lives. To be called once.
void makeReadable(TextPane& pane);

}  // namespace kestrel
