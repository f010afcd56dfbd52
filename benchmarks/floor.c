/* What no repaint of polygons can undercut: a canvas cleared and polygons made on it through Tcl's
   C interface. All words of the commands are there beforehand, but for the numbers, which are new
   with each repaint. A polygon is created with three points and completed by `coords`: given with
   `create`, each number would be made a text and read again. */
#include <tcl.h>

enum { THREE_POINTS = 6 };

struct polygon {
  Tcl_Obj **words; /* canvas, "create", "polygon", room for three points, options */
  int word_count;
  const double *numbers; /* x1, y1, x2, y2 ... */
  int number_count;
};

Tcl_Obj *word(const char *text) {
  Tcl_Obj *made = Tcl_NewStringObj(text, -1);
  Tcl_IncrRefCount(made);
  return made;
}

void drop_word(Tcl_Obj *dropped) { Tcl_DecrRefCount(dropped); }

static int run(Tcl_Interp *interpreter, int count, Tcl_Obj *const *words) {
  for (int i = 0; i < count; ++i) Tcl_IncrRefCount(words[i]);
  const int code = Tcl_EvalObjv(interpreter, count, words, 0);
  for (int i = 0; i < count; ++i) Tcl_DecrRefCount(words[i]);
  return code;
}

static int create(Tcl_Interp *interpreter, const struct polygon *made, Tcl_Obj *coords) {
  Tcl_Obj *numbers = Tcl_NewListObj(made->number_count, NULL);
  for (int i = 0; i < made->number_count; ++i) {
    Tcl_ListObjAppendElement(NULL, numbers, Tcl_NewDoubleObj(made->numbers[i]));
  }
  for (int i = 0; i < THREE_POINTS; ++i) made->words[3 + i] = Tcl_NewDoubleObj(made->numbers[i]);
  const int code = run(interpreter, made->word_count, made->words);
  if (code != TCL_OK) return code;
  Tcl_Obj *completing[] = {made->words[0], coords, Tcl_GetObjResult(interpreter), numbers};
  return run(interpreter, 4, completing);
}

/* `clearing`: the words canvas, "delete", "all". TCL_OK, or what the first failing command gave. */
int repaint(Tcl_Interp *interpreter, Tcl_Obj *const *clearing, Tcl_Obj *coords,
            const struct polygon *polygons, int count) {
  int code = run(interpreter, 3, clearing);
  for (int i = 0; i < count && code == TCL_OK; ++i) {
    code = create(interpreter, &polygons[i], coords);
  }
  return code;
}
