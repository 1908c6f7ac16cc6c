#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>
#include <cstdio>

/// A window with one control of each kind that tests look for. Its button changes its label.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QWidget window;
    window.setFixedSize(300, 200);
    window.setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    auto* layout = new QVBoxLayout(&window);
    auto* label = new QLabel("waiting", &window);
    auto* button = new QPushButton("Press me", &window);
    auto* box = new QCheckBox("Tick me", &window);
    auto* dead = new QPushButton("Leave me", &window);
    dead->setEnabled(false);
    for (QWidget* each : {static_cast<QWidget*>(label), static_cast<QWidget*>(button),
                          static_cast<QWidget*>(box), static_cast<QWidget*>(dead)}) {
        layout->addWidget(each);
    }
    QObject::connect(button, &QPushButton::clicked, label, [label] { label->setText("pressed"); });
    window.show();
    std::puts("shown");
    std::fflush(stdout);
    return QApplication::exec();
}
