// COSAID: owns a script, a context or a value of a scripting component.
#pragma once

#include "Libraries/MacToolboxLib/COSAID/COSAIDReader.h"

/// Disposes of the number that it holds when it gets another, is freed or goes. An operation that
/// replaces the number and fails leaves the object empty; only Copy and Compile leave
/// it as it was.
class COSAID : public COSAIDReader {
  public:
    explicit COSAID(ComponentInstance component) : COSAIDReader(component, kOSANullScript) {}
    COSAID(const COSAID&) = delete;
    COSAID& operator=(const COSAID&) = delete;

    // Virtual, in this order, after those of the base.

    ~COSAID() override;
    /// Takes over `id` of `component`, unless it holds just these.
    void SetOSAID(ComponentInstance component, OSAID id) override;
    /// The value of a descriptor.
    virtual void Set(const AEDesc* value);
    /// Loads the resource 'scpt' 128 of a file, else a data fork that ends in the mark of stored
    /// scripts. Without such a mark the status of the resource is thrown, else that of the data
    /// fork. `isDataFork` is written on success only. Resources must be loaded when they are got
    /// (SetResLoad).
    virtual void Load(const FSRef* file, SInt32 modeFlags);
    virtual void Load(const FSRef* file, bool& isDataFork, SInt32 modeFlags);
    /// A file as above by 'fsrf', 'alis', 'file', 'fss ' or 'furl'; a descriptor of any other type
    /// goes to the component.
    virtual void Load(const AEDesc* desc, SInt32 modeFlags);
    /// Through the component's own loader. `storable`: whether StoreFile can write it back;
    /// written on success only.
    virtual void LoadFile(const FSRef& file, bool& storable, SInt32 modeFlags);
    virtual void LoadFile(const FSRef& file, SInt32 modeFlags);
    /// Through the component's own writer, which chooses the form.
    virtual void StoreFile(const FSRef& file, SInt32 modeFlags);
    /// Takes over what `other` holds, and leaves it without number and component.
    virtual void Aquire(COSAID& other);
    void Aquire(COSAID&& other) = delete;
    /// Takes over what the reader names, and what it goes on naming: no other owner may have it.
    virtual void Aquire(const COSAIDReader& other);
    /// Takes over a number of the component.
    virtual void Aquire(OSAID id);
    /// Copies of a number, made by this object's component; 0 leaves it empty.
    virtual void Copy(const COSAID& other);
    virtual void Copy(OSAID id);
    /// The component stays.
    virtual void Free();

    void SetComponent(ComponentInstance component);

    /// Whether the data fork is longer than the mark that it ends in; false for whatever cannot be
    /// read.
    static bool IsDataForkScript(const FSRef* file);

  private:
    void LoadResource(const FSRef* file, SInt32 modeFlags);
    void LoadDataFork(const FSRef* file, SInt32 modeFlags);
};
