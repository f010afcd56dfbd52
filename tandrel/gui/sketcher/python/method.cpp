#include "python/method.hpp"

namespace tandrel::py {

namespace {

constexpr int kFlags = METH_VARARGS | METH_KEYWORDS;

}  // namespace

Signature::Signature(const char* name, std::initializer_list<const char*> parameters,
                     const char* doc, Binding kind, PyCFunction code)
    : binding_(kind) {
  std::string signature = kind == Binding::kMethod ? "$self" : "";
  bool optional = false;
  for (const std::string_view parameter : parameters) {
    if (!signature.empty()) signature += ", ";
    signature += parameter;
    const std::size_t equals = parameter.find('=');
    if (equals != std::string_view::npos && !optional) {
      optional = true;
      format_ += '|';
    }
    format_ += 'O';
    parameter_names_.emplace_back(parameter.substr(0, equals));
  }
  for (const std::string& parameter : parameter_names_) names_.push_back(parameter.c_str());
  names_.push_back(nullptr);
  format_ += std::string(":") + name;
  // Python reads the signature off the first line of the doc text.
  doc_ = std::string(name) + "(" + signature + ")\n--\n\n" + doc;
  definition_ = {name, code, kFlags, doc_.c_str()};
}

Ref Signature::descriptor() const {
  return Ref::steal(PyDescr_NewMethod(&PyBaseObject_Type, &definition_));
}

Ref Signature::function(const Ref& module) const {
  const Ref name = module.attr("__name__"_n);
  return Ref::steal(PyCFunction_NewEx(&definition_, nullptr, name.get()));
}

}  // namespace tandrel::py
