#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include <cstring>
#include <map>
#include <string>

#include "platform/autorelease_pool.h"
#include "tests/macos/loader/cocoa/stand_ins.h"
#include "tests/macos/loader/load_error.h"
#include "tests/macos/loader/objc/bridge.h"
#include "tests/macos/loader/objc/metadata.h"

namespace quillory::loader {
namespace {

template <class T>
std::span<T> entriesOf(const Image& image, const char* section) {
  const auto bytes = image.dataSection(section);
  return {reinterpret_cast<T*>(bytes.data()), bytes.size() / sizeof(T)};
}

void adoptSelectors(const Image& image) {
  for (const void*& reference : entriesOf<const void*>(image, "__objc_selrefs"))
    reference = sel_registerName(std::string(image.textAt(reference)).c_str());
}

/// A constant string of this machine's Foundation.
struct OurString {
  const void* isa;
  const char* text;
  unsigned length;
};

const char* utf8Of(const TheirString& string) {
  NSString* text = [[NSString alloc] initWithBytes:string.text
                                            length:string.length * 2
                                          encoding:NSUTF16LittleEndianStringEncoding];
  if (text == nil) throw LoadError("a constant string that is no text");
  const char* const copy = strdup([text UTF8String]);
  [text release];
  return copy;
}

// The same memory, because the code knows the strings by their addresses.
void adoptStrings(const Image& image) {
  constexpr std::uint64_t kUtf16 = 0x10;
  for (TheirString& string : entriesOf<TheirString>(image, "__cfstring")) {
    const bool isWide = (string.flags & kUtf16) != 0;
    if (!image.contains(string.text)) throw LoadError("a constant string outside of the image");
    const char* const text = isWide ? utf8Of(string) : static_cast<const char*>(string.text);
    const OurString ours = {string.isa, text,
                            static_cast<unsigned>(isWide ? std::strlen(text) : string.length)};
    std::memcpy(&string, &ours, sizeof ours);
  }
}

class ClassAdoption {
 public:
  explicit ClassAdoption(const Image& image) : image_(image) {}

  void run() {
    for (TheirClass* their : entriesOf<TheirClass*>(image_, "__objc_classlist")) adopt(their);
    for (const TheirCategory* category : entriesOf<const TheirCategory*>(image_, "__objc_catlist"))
      addCategory(*category);
    for (const char* section : {"__objc_classrefs", "__objc_superrefs"})
      for (const void*& reference : entriesOf<const void*>(image_, section))
        reference = ours(reference);
    for (TheirClass* their : entriesOf<TheirClass*>(image_, "__objc_nlclslist")) sendLoad(their);
  }

 private:
  const TheirClassData& dataOf(const TheirClass* their) const {
    // The lowest bits are flags.
    const auto address = reinterpret_cast<std::uint64_t>(their->data) & ~std::uint64_t{7};
    const auto* data = reinterpret_cast<const TheirClassData*>(address);
    if (!image_.contains(their) || !image_.contains(data))
      throw LoadError("a class outside of the image");
    return *data;
  }

  // One of the image's classes, or a class here already.
  Class ours(const void* reference) {
    if (!image_.contains(reference)) return static_cast<Class>(const_cast<void*>(reference));
    return adopt(static_cast<TheirClass*>(const_cast<void*>(reference)));
  }

  Class adopt(TheirClass* their) {
    if (const auto found = adopted_.find(their); found != adopted_.end()) return found->second;
    const TheirClassData& data = dataOf(their);
    const std::string name(image_.textAt(data.name));
    if (objc_lookUpClass(name.c_str()) != Nil)
      throw LoadError("class " + name + " is there already");
    const Class superclass = ours(their->superclass);
    const Class made = objc_allocateClassPair(superclass, name.c_str(), 0);
    if (made == Nil) throw LoadError("class " + name + " cannot be made");
    adopted_[their] = made;
    addVariables(made, data);
    objc_registerClassPair(made);
    checkVariables(made, data);
    addMethods(made, data.methods);
    addMethods(object_getClass(made), dataOf(their->isa).methods);
    addProtocols(made, data.protocols);
    return made;
  }

  void addVariables(Class made, const TheirClassData& data) {
    if (data.variables == nullptr) return;
    for (std::uint32_t i = 0; i < data.variables->count; ++i) {
      const TheirVariable& variable = data.variables->begin()[i];
      const std::string name(image_.textAt(variable.name));
      if (class_addIvar(made, name.c_str(), variable.size,
                        static_cast<unsigned char>(variable.alignmentBits & 0xFF),
                        variable.type) == NO)
        throw LoadError("the variable " + name + " of a class cannot be made");
    }
  }

  // The superclass may be larger here than the compiler could know: the code reads the offsets.
  void checkVariables(Class made, const TheirClassData& data) {
    if (data.variables == nullptr) return;
    for (std::uint32_t i = 0; i < data.variables->count; ++i) {
      const TheirVariable& variable = data.variables->begin()[i];
      const Ivar ours = class_getInstanceVariable(made, variable.name);
      const auto offset = static_cast<std::uint64_t>(ivar_getOffset(ours));
      // Of a class whose superclass is the root, the compiler knows the offsets, and uses them.
      if (class_getSuperclass(made) == [NSObject class] && *variable.offset != offset)
        throw LoadError(std::string("the variable ") + variable.name + " stands elsewhere here");
      *variable.offset = offset;
    }
  }

  void addMethods(Class target, const TheirMethods* methods) {
    if (methods == nullptr) return;
    if ((methods->sizeAndFlags & 0x80000000) != 0 ||
        (methods->sizeAndFlags & 0xFFFC) != sizeof(TheirMethod))
      throw LoadError("methods in a form that is not known here");
    for (std::uint32_t i = 0; i < methods->count; ++i) {
      const TheirMethod& method = methods->begin()[i];
      const SEL selector = sel_registerTypedName(std::string(image_.textAt(method.name)).c_str(),
                                                 std::string(image_.textAt(method.types)).c_str());
      const auto function = reinterpret_cast<IMP>(method.function);
      // Of a category it may replace one. (class_replaceMethod would also change a superclass.)
      if (class_addMethod(target, selector, function, method.types) == NO)
        method_setImplementation(class_getInstanceMethod(target, selector), function);
    }
  }

  // Those that are known here; of the others nobody here can ask.
  void addProtocols(Class made, const TheirProtocols* protocols) {
    if (protocols == nullptr) return;
    for (std::uint64_t i = 0; i < protocols->count; ++i) {
      Protocol* known = objc_getProtocol(protocols->begin()[i]->name);
      if (known != nil) class_addProtocol(made, known);
    }
  }

  void addCategory(const TheirCategory& category) {
    const Class extended = ours(category.extended);
    addMethods(extended, category.instanceMethods);
    addMethods(object_getClass(extended), category.classMethods);
  }

  void sendLoad(TheirClass* their) {
    const Class made = ours(their);
    const Method method = class_getClassMethod(made, @selector(load));
    if (method != nullptr) method_getImplementation(method)(made, @selector(load));
  }

  const Image& image_;
  std::map<const TheirClass*, Class> adopted_;
};

}  // namespace

const void* classSymbol(std::string_view symbol) {
  for (const std::string_view prefix : {"_OBJC_CLASS_$_", "_OBJC_METACLASS_$_"}) {
    if (!symbol.starts_with(prefix)) continue;
    const std::string name(symbol.substr(prefix.size()));
    const Class found = objc_lookUpClass(std::string(classInstead(name)).c_str());
    return prefix.find("META") == prefix.npos || found == Nil ? found : object_getClass(found);
  }
  return nullptr;
}

const void* constantStringClass() { return object_getClass(@""); }

void adoptObjectiveC(const Image& image) {
  const AutoreleasePool pool;
  adoptSelectors(image);
  adoptStrings(image);
  ClassAdoption(image).run();
}

}  // namespace quillory::loader
