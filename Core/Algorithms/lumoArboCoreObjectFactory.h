#ifndef lumoArboCoreObjectFactory_h
#define lumoArboCoreObjectFactory_h

#include <itkObjectFactory.h>
#include "lumoCoreObjectFactoryBase.h"

namespace lumo
{
/** What the module tells the toolkit about vessel trees: their mapper, the default properties of their nodes, their
 *  file writer and the file patterns the module adds to the open and save dialogs. Registered with the toolkit's
 *  core object factory by RegisterArboCoreObjectFactory() (below).
 *
 *  Every instance holds a VesselTreeFileWriter in its writer list. The first instance made in the process also
 *  does the one-time work: it logs "ArboCoreObjectFactory c'tor" at information level, registers the .ves IO
 *  factory with ITK (VesselTreeFileIOFactory::RegisterOneFactory) and fills its extension maps; later instances
 *  keep their maps empty, so that a module registered once announces its patterns once.
 *
 *  Open map: every pattern the module announces, each with its description (pattern: description):
 *    "*.rs": "Scene descriptions"; "*.seq", "*.pic", "*.pic.gz", "*.seq.gz": "VALD Pic"; "*.mhd": "MetaImage";
 *    "*.mps": "Point sets"; "*.stl", "*.vtk", "*.vtp", "*.obj": "Surface files"; "*.stl": "STL files";
 *    "*.vtk": "VTK surface files"; "*.pvtk": "VTK image files"; "*.ves", "*.uvg", "*.dvg": "Vessel files";
 *    "*.par": "PAR/REC files"; "hpsonos.db", "HPSONOS.DB": "DSR files"; "*.VOL", "*.V00": "GE US files";
 *    "*.dcm", "*.gdcm", "*.dc3", "*.ima": "DICOM files"; "*.nii": "NIfTI format";
 *    "*.png", "*.bmp", "*.jpg", "*.jpeg", "*.tiff", "*.tif": "Sets of 2D slices"; "*.nrrd": "Nearly Raw Raster
 *    Data"; "*.vti": "VTK Image Data Files"; "*.hdr": "Image Header Files"; "*.gipl": "UMDS GIPL Format Files";
 *    "*.spr": "Stimulate Files"; "*.lsm": "Microscope Images".
 *  Which of these a program can open depends on the readers registered in it; the core factory merges the lists.
 *  Save map: only what the module itself writes: "*.ves", "*.uvg", "*.dvg": "Vessel files" (VesselTreeFileWriter)
 *  and "*.vtp": "Surface Files" (the centre lines as VTK poly data, VesselTreePolyDataWriter). "Surface Files" is
 *  the module's historical spelling and stays beside the core's "Surface files": dialogs list both.
 *  Filter texts as CoreObjectFactoryBase::CreateFileExtensions composes them. */
class ArboCoreObjectFactory : public CoreObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ArboCoreObjectFactory);

  using Self = ArboCoreObjectFactory;
  using Superclass = CoreObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(ArboCoreObjectFactory, CoreObjectFactoryBase);

  /** The tube mapper for a VesselTreeData node in the 3-D slot (DataNode::Standard3D); null for every other node
   *  and slot. */
  itk::Object::Pointer
  CreateMapper(DataNode * node, DataNode::MapperSlotId slot) override;

  /** For a node whose data is a VesselTreeData: "visible" true, "VesselTreeLookupTable" a new
   *  VesselTreeLookupTableProperty holding a new VesselTreeLookupTable (default colours) whose VTK table is the
   *  per-vessel table VesselTreeToLookupTableFilter makes from the node's tree (data without a tree: the default
   *  colours only), and "Render skeleton" false. These are set whatever the node held. Other nodes are left
   *  unchanged. */
  void
  SetDefaultProperties(DataNode * node) override;

protected:
  ArboCoreObjectFactory();
  ~ArboCoreObjectFactory() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  void
  FillExtensionMaps();
};

/** Registers the module's factory with CoreObjectFactory::GetInstance() as an extra factory. The first call makes
 *  the factory (see the class) and keeps it for the whole process; a call while it is registered does nothing.
 *  Thread-safe. */
void
RegisterArboCoreObjectFactory();

/** Removes the factory from CoreObjectFactory::GetInstance(); nothing happens when it is not registered. The factory
 *  is kept: a later RegisterArboCoreObjectFactory() registers the same factory again (with its extension maps and
 *  without logging again). The ITK IO factory for .ves files stays registered. Thread-safe. */
void
UnRegisterArboCoreObjectFactory();
} // namespace lumo

#endif
