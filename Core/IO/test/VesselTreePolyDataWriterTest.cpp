#include "lumoVesselTreePolyDataWriter.h"

#include "VesselTestTree.h"

#include <gtest/gtest.h>

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkXMLPolyDataReader.h>

#include <filesystem>
#include <random>

using namespace lumo;
using namespace vessel_test;

TEST(VesselTreePolyDataWriter, OneLinePerVesselWithTwoPointsAndTheStatedArrays)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  tree->getRoot()->appendPoint({ 0, 0, 0, 8 });
  tree->getRoot()->appendPoint({ 10, 0, 0, 6 });
  VesselNode * child = addChild(tree->getRootNode(), 7);
  child->getData()->appendPoint({ 10, 0, 0, 4 });
  child->getData()->appendPoint({ 10, 5, 0, 4 });
  child->getData()->appendPoint({ 10, 9, 1, 2 });
  child->getData()->getProperties().setSegmentType(S_VII);
  child->getData()->getProperties().setResectionStatus(ToBeResected);
  child->getData()->getProperties().setBloodVesselType(HepaticVein);
  addChild(tree->getRootNode(), 9)->getData()->appendPoint({ 5, 5, 5, 1 }); // one point: no line

  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  std::random_device random;
  const auto file = std::filesystem::temp_directory_path() / ("centrelines-" + std::to_string(random()) + ".vtp");
  auto writer = VesselTreePolyDataWriter::New();
  writer->SetInputData(data);
  writer->SetFileName(file.string().c_str());
  writer->Update();

  auto reader = vtkSmartPointer<vtkXMLPolyDataReader>::New();
  reader->SetFileName(file.string().c_str());
  reader->Update();
  std::filesystem::remove(file);
  vtkPolyData * polyData = reader->GetOutput();
  ASSERT_EQ(polyData->GetNumberOfLines(), 2);
  ASSERT_EQ(polyData->GetNumberOfPoints(), 5);
  vtkDataArray * radius = polyData->GetPointData()->GetArray("radius");
  vtkDataArray * ids = polyData->GetPointData()->GetArray("vesselIds");
  ASSERT_NE(radius, nullptr);
  ASSERT_NE(ids, nullptr);
  EXPECT_EQ(radius->GetTuple1(0), 4.0);
  EXPECT_EQ(radius->GetTuple1(4), 1.0);
  EXPECT_EQ(ids->GetTuple1(1), 1.0);
  EXPECT_EQ(ids->GetTuple1(2), 7.0);
  double point[3];
  polyData->GetPoint(4, point);
  EXPECT_EQ(point[1], 9.0);
  for (const char * name : { "vesselId", "bloodVesselType", "segment", "resectionStatus" })
  {
    ASSERT_NE(polyData->GetCellData()->GetArray(name), nullptr) << name;
  }
  EXPECT_EQ(polyData->GetCellData()->GetArray("vesselId")->GetTuple1(1), 7.0);
  EXPECT_EQ(polyData->GetCellData()->GetArray("bloodVesselType")->GetTuple1(1), 1.0);
  EXPECT_EQ(polyData->GetCellData()->GetArray("segment")->GetTuple1(1), 9.0);
  EXPECT_EQ(polyData->GetCellData()->GetArray("resectionStatus")->GetTuple1(1), 3.0);
  EXPECT_EQ(polyData->GetCellData()->GetArray("segment")->GetTuple1(0), 1.0);
}
