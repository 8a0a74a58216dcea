// An outside program: gives an object values, walks them and reports.

#include <string>
#include <vector>

#include <qxsystem/qxsystem.h>

int main() {
  QXSystem::QXContainer molecule;
  molecule.SetData<std::string>("title", "water");
  molecule.SetData("charges", std::vector<float>{-0.8f, 0.4f, 0.4f});
  molecule.SetData<int>("atoms", 3);

  for (QXSystem::QXIter<QXSystem::QXBaseData> item = molecule.GetDataIter(); item; ++item)
    QXPlatform::qxout << QXSystem::QXGetTag(item->GetTag()) << QXPlatform::qxendl;
  QXSystem::QXThrow.Info("%d atoms", molecule.GetData<int>("atoms"));
  return QXSystem::QXThrow.Count(QXSystem::QXErrorLevel::Info) == 1 ? 0 : 1;
}
