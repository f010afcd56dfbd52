// Asks LeakSanitizer what a Python process holds no more and never freed: at the end of the
// program, while the interpreter is whole, so that whatever it still holds counts as held.
// UndefinedBehaviorSanitizer gets a file to report into.
//
// To be preloaded behind the sanitizer, which other programs than Python must survive: it refers to
// functions of Python, found when they are called, and to none of its variables. It puts itself
// before dlsym, through which the interpreter finds the first extension module that it imports.
// Build it with optimisation: dlsym looks at its caller's address.

#define _GNU_SOURCE
#define PY_SSIZE_T_CLEAN
#define Py_LIMITED_API 0x03090000
#include <Python.h>
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

typedef void* Find(void*, const char*);
typedef int Check(void);
typedef void Name(const char*);

static Find* find = NULL;

// The collector's links before each object that it tracks reach every list, tuple and dictionary,
// the forgotten ones too. Cutting them ruins the process, which is about to end.
static void cut_collector_lists(void) {
  enum { kLinks = 2 * sizeof(void*) };
  PyObject* gc = PyImport_ImportModule("gc");
  PyObject* tracked = gc == NULL ? NULL : PyObject_CallMethod(gc, "get_objects", NULL);
  if (tracked == NULL) _exit(1);
  for (Py_ssize_t i = PyList_Size(tracked); i-- > 0;) {
    memset((char*)PyList_GetItem(tracked, i) - kLinks, 0, kLinks);
  }
  // The list itself reaches them all as well: forget where its items are.
  memset((char*)tracked + sizeof(PyObject), 0, sizeof(Py_ssize_t) + sizeof(void*));
}

static PyObject* ask(PyObject* self, PyObject* arguments) {
  (void)self;
  (void)arguments;
  // An interpreter that ignores the environment keeps small objects in memory of its own, where
  // the sanitizer neither sees nor looks.
  PyObject* flags = PySys_GetObject("flags");
  PyObject* ignores = PyObject_GetAttrString(flags, "ignore_environment");
  if (ignores == NULL || PyObject_IsTrue(ignores) != 0) return ignores;
  for (int i = 0; i < 3; ++i) PyGC_Collect();
  const pid_t child = fork();
  if (child == 0) {
    cut_collector_lists();
    Check* check = (Check*)dlsym(RTLD_DEFAULT, "__lsan_do_recoverable_leak_check");
    if (check != NULL) check();
    _exit(0);
  }
  if (child > 0) waitpid(child, NULL, 0);
  return ignores;
}

static void ask_at_exit(void) {
  static PyMethodDef definition = {"ask", ask, METH_NOARGS, NULL};
  PyObject* function = PyCFunction_NewEx(&definition, NULL, NULL);
  PyObject* module = PyImport_ImportModule("atexit");
  PyObject* answer = module == NULL ? NULL : PyObject_CallMethod(module, "register", "O", function);
  if (answer == NULL) Py_FatalError("no question about leaks");
  Py_DECREF(answer);
  Py_DECREF(module);
  Py_DECREF(function);
}

// Beside AddressSanitizer, gcc's UndefinedBehaviorSanitizer heeds no log_path and writes to
// standard error, which a test runner may swallow.
static void name_report_file(void) {
  const char* path = getenv("UNDEFINED_BEHAVIOR_REPORT");
  void* library = dlopen("libubsan.so.1", RTLD_LAZY | RTLD_NOLOAD);
  if (path == NULL || library == NULL) return;
  Name* set_report_path = (Name*)find(library, "__sanitizer_set_report_path");
  if (set_report_path != NULL) set_report_path(path);
}

// The interpreter looks an extension module's initialisation up with its lock held.
void* dlsym(void* library, const char* name) {
  static int asked = 0;
  if (find == NULL) find = (Find*)dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.2.5");
  if (strncmp(name, "PyInit_", 7) == 0) {
    if (asked++ == 0) ask_at_exit();
    name_report_file();
  }
  return find(library, name);  // as the last step, so that it sees the caller's own address
}
