#pragma once

#include "base/api.h"
#include "base/dir.h"
#include "base/mutex_named.h"
#include "xml/xml_document.h"

#include <wx/arrstr.h>
#include <wx/string.h>
#include <wx/thread.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// One registration with a configuration.
struct tCfgObject
{
    CJScriptLink* link = nullptr; ///< of the registered object; not owned
    wxString section;             ///< The names of elements, from below the root element on, with "/" between them.
};

/// An XML document that keeps the state of registered objects in a file: the script class "CXmlConfig".
///
/// Each object has a section, an element below the root element, which its script functions ("hooks") read and write:
///
///     LoadXmlConfig(section)     reads; that it was called without failing is enough
///     _LoadXmlConfig(section)    reads; its result, as a truth value, says whether that was done
///     _DefaultXmlConfig()        called when there is no section, and when nobody has read it
///     StoreXmlConfig(section)    writes the section, which is empty then; false ends the store, and so the save
///     _StoreXmlConfig(section)   the same, behind StoreXmlConfig; for a base and what is built on it
///
/// Hooks are called in the order of registration. They may register, unregister, load and store objects, and save the
/// file; what would not end is refused with an error in the log: loading the file from a hook while it is being loaded
/// or stored, and saving it while it is being stored. A save from a hook while the file is being loaded leaves the
/// sections alone whose objects have not been loaded yet.
///
/// The registry never keeps a native object alive; when one goes, its registrations go with it. A script object that
/// is registered lives on, though nothing else refers to it.
///
/// At every moment there is a complete state on disk, under the file's name or under that with ".old" behind it,
/// whatever happens to the process or the disk. The previous content of the file is in ".old" after a save. Loads and
/// saves of one file, by whatever path it is reached, exclude each other between processes and threads. What a save
/// would write is read first: a tree that could not be loaded again (a hook may have given an element an impossible
/// name) fails the save, with an error in the log and nothing changed on disk.
///
/// One configuration is used by one thread at a time. docs/configuration.md explains more.
class VC_QXPARSER_API CXmlConfig : public CXmlDocument
{
public:
    /// The registrations; not for hosts.
    class CHashMapCfgObject;

    /// A configuration without content, to be loaded.
    /// @param script null for one without script: it loads and saves, but calls no hooks.
    /// @param name of the file, and of the script object as a child of `parent`.
    /// @param dir where the file is; it may be made later, the log has a notice when it is not there yet.
    /// @param fileCode whether directories are switched to file code 3 (UTF-8) before files are opened.
    CXmlConfig(CJScript* script, wxString name, CJScriptLink* parent, CDir dir, bool fileCode);
    /// As above, with a name of its own for the script object.
    CXmlConfig(CJScript* script, wxString objectName, CJScriptLink* parent, CDir dir, wxString fileName, bool fileCode);
    ~CXmlConfig() override;

    /// Loads the file; where it cannot be opened the one with ".old" behind its name; then these two from the root
    /// directory "SERVERCFG". The log has a warning for each that is there and cannot be. Then every object is loaded.
    /// When none can be opened, or the first that can is not XML, the tree is an empty one with the root "Config", and
    /// no hook is called.
    void LoadFile();
    /// Loads an open file, which stays open, in the same way.
    void LoadFile(const CFile& file);
    /// Whether the last load has found a file and read it.
    bool IsLoaded() const { return m_loaded; }
    /// Makes the tree an empty one with the root "Config".
    void CreateEmtyConfig();

    /// Stores every object, makes the file's content its backup and the tree the file's content.
    /// @param createFlag whether the file may be replaced also when its backup cannot be made.
    /// @return false when an object's store fails (the log says "CXmlConfig::SaveFile() Failed!"), when the locks
    /// cannot be had, or when something cannot be written. A complete state is readable then too: nearly always the old
    /// one, the new one where only the last step has failed, telling the disk.
    bool SaveFile(bool createFlag);
    /// Stores every object and writes the tree to another place. Nothing is backed up.
    /// @param createFlag whether a file there may be replaced.
    bool SaveFile(CDir& dir, const wxString& name, bool createFlag);

    /// Saves with what a side file adds, which is named like the file with "_tmp" behind it and is loaded as LoadFile
    /// does: its tree is merged into this one by MergeXML, and the side file stays as it is.
    /// @param storeFirst whether objects are stored before.
    /// @param keepExisting whether attributes that are there keep their values.
    /// @return false as for SaveFile, and when the root elements have different names; nothing is written then.
    bool MergeSaveFile(bool storeFirst, bool keepExisting, bool createFlag);

    /// Loads the file, has `change` work on objects or nodes, and saves, with nobody in between: what any number of
    /// processes change in this way adds up. What was not saved before is lost, as by any load.
    /// @param change returns false to save nothing.
    /// @return whether the change has been saved. False too, without a call of `change`, when a file is there that
    /// cannot be read, so that nothing is built on the lack of it.
    bool UpdateFile(const std::function<bool(CXmlConfig& config)>& change);

    /// The element at a path, from below the root element on; empty names in it count for nothing. The empty node where
    /// there is none, unless `create` has the missing ones made (and the root element "Config", too).
    CXmlNode* GetSectionNode(wxString path, bool create);

    ///@{
    /// Hands an object its section, or has it take its default state. Nothing happens without a script, and for what is
    /// not registered; a link with several registrations is taken for its first.
    void ObjectLoad(const tCfgObject& object);
    void ObjectLoad(const wxString& name);
    void ObjectLoad(CJScriptLink* link);
    ///@}

    ///@{
    /// Has an object write its section, which is made if need be.
    /// @return false when a hook fails or says so, and for what is not registered; true without a script.
    bool ObjectStore(const tCfgObject& object);
    bool ObjectStore(const wxString& name);
    bool ObjectStore(CJScriptLink* link);
    ///@}

    /// Loads every object.
    void LoadAll();
    /// Stores objects up to the first that fails, which makes it false.
    bool StoreAll();

    ///@{
    /// Stores objects by the names of their registrations, as ObjectStore does, and ignores failures.
    void StoreObjectConfig(const wxString& name);
    void StoreObjectsConfig(const wxArrayString& names);
    ///@}

    /// Registers an object and loads it. Characters of the names other than ASCII letters, digits and "_" become "_".
    /// Another registration of this name ends. Nothing happens for an empty name.
    /// @param section empty: the object's section is the element `name`; else the element `name` in this element.
    void ObjectRegisterNamed(CJScriptLink* link, wxString name, wxString section);
    /// Registers a window under its name (wxWindow::GetName). Nothing happens for objects that are no windows.
    void ObjectRegister(CJScriptLink* link, wxString section);
    /// As ObjectRegisterNamed, but the object is not loaded.
    void ObjectRegisterNamedNoLoad(CJScriptLink* link, wxString name, wxString section);

    ///@{
    /// As ObjectRegisterNamed and ObjectRegister, with the element `name` as the section.
    void ObjectRegisterNamedNoSect(CJScriptLink* link, wxString name);
    void ObjectRegisterNoSect(CJScriptLink* link);
    ///@}

    ///@{
    /// Ends a registration; of several that a link has, the first.
    void ObjectUnregister(const wxString& name);
    void ObjectUnregister(CJScriptLink* link);
    ///@}

    ///@{
    /// Whether there is a registration: of this name, of this object.
    bool HasObject(const wxString& name) const;
    bool HasObject(const CJScriptLink* link) const;
    ///@}

    /// Leaves the configuration without a tree.
    void CleanConfig();
    /// Ends all registrations.
    void CleanObjects();

    ///@{
    /// What every scriptable class has: see CJScriptLink.
    const JSMap* GetJSMap() const override { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
    ///@}

private:
    class Locks;
    class FileLocks;
    class Busy;
    enum class Activity
    {
        None,
        Loading,
        Storing
    };

    // What script calls.
    void JS_Register(CJScriptLink* link);
    void JS_RegisterNamed(CJScriptLink* link, const xml_detail::TextArgument& name);
    void JS_RegisterSection(CJScriptLink* link, const xml_detail::TextArgument& section);
    void JS_RegisterNamedSection(CJScriptLink* link, const xml_detail::TextArgument& name,
                                 const xml_detail::TextArgument& section);
    bool JS_SaveFile();
    bool JS_LoadFile();
    bool JS_ObjectStore(CJScriptLink* link);
    void JS_ObjectLoad(CJScriptLink* link);

    bool Refuses(Activity activity, const wxString& operation) const;
    bool AddObject(CJScriptLink* link, const wxString& name, const wxString& section, unsigned long& id);
    void LoadRegistered(unsigned long id);
    bool LoadSection(const tCfgObject& object);
    bool MakeSection(const wxString& path);

    CDir Directory() const;
    CFile OpenToLoad();
    void LoadTree(const CFile& file);
    bool StoreForSave();
    bool Serialise(std::vector<std::string>& pieces);
    bool ReplaceFile(bool createFlag);
    bool ReplaceBackup(CDir& dir) const;
    bool IsGood(CDir& dir) const;

    std::unique_ptr<CHashMapCfgObject> m_objects;
    wxCriticalSection m_lock;
    CDir m_directory;
    bool m_fileCode;
    CMutexNamed m_mutex;
    wxString m_fileName;
    Activity m_activity = Activity::None;
    bool m_loaded = false;
    bool m_fromFile = false;   ///< The last load has opened the file itself.
    std::string m_goodStamp;   ///< That of the file when it was loaded or saved the last time.
    bool m_passedOver = false; ///< The last load has met a file that is there and cannot be read.
};
