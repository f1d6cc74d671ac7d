/*
     void Example()
*/
// comment
char DisallowedPrograms[256][2]=
{
     "badword", 
     ""
};
char StoppedPrograms[256][3]=
{
     "_STPCU_Tool {2}.lnk", 

     "_REGCU_C:\x.exe",,
}
const MainStartupDelay = 2,5;
const StartupType = 2; // note
const CloseType;
const Language = Deutsch;
const ShowTipsAtStartup = True;
void My_Group()
{
	Execute( "C:\a.exe" , "-x", 2, "A");
     ExecuteReg (""C:\Users\a\Update.exe" ", "--processStart "Teams.exe"", 3, "com.squirrel.Teams.Teams");
     ExecuteRegAU ("C:\ProgramData\{4F1A}\setup.exe", "--url=https://example.com", 4, "Vendor (x86), Updater");
     Execute ("", "", 0, "");
}
void Startup
{
     Execute ("C:\T\Tolvane Items\Current User\\Tool.lnk", "", 0.5, "");
}
