#ifndef STYLESHEET_H
#define STYLESHEET_H

// The application-wide style sheet: group boxes with a rounded grey frame
// and their title set into it.
inline constexpr char TOOLBOX_STYLE_SHEET[]
    = "QGroupBox { border: 1px solid gray; border-radius: 5px; margin-top: 0.5em; }\n"
      "QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 3px 0 3px; }";

#endif
